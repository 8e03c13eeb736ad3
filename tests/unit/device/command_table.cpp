#include "unit/device/command_table.h"

namespace mvx2test {

const std::string unchanged = "(unchanged)";

namespace {

using velmorin::MVX2Interfaces;

// The name of a method and the method. Only a macro makes a text of a name.
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define METHOD(name) #name, &MVX2Interfaces::name

Result print(bool value) { return {value ? "true" : "false"}; }
Result print(const char* text) { return {text, text}; }
Result print(unsigned int* list) {
  std::string text;
  for (int i = 0; i < 10; ++i) text += (i == 0 ? "" : " ") + std::to_string(list[i]);
  return {text, nullptr, list};
}
template <typename T>
Result print(T value) {
  return {std::to_string(value)};
}

// Calls a method that returns something, or nothing.
template <typename R, typename... Parameters, typename... Arguments>
Call call(R (MVX2Interfaces::*method)(Parameters...), Arguments... arguments) {
  return [=](MVX2Interfaces& facade) {
    if constexpr (std::is_void_v<R>) {
      (facade.*method)(static_cast<Parameters>(arguments)...);
      return Result{"nothing"};
    } else {
      return print((facade.*method)(static_cast<Parameters>(arguments)...));
    }
  };
}

// The line as the terminal sends it: behind the echo, before its prompt.
std::string framed(const std::string& line) { return "echo\r\n" + line + "\r\n>"; }

const std::string no_connected = "No connected";
const std::string zeros = "0 0 0 0 0 0 0 0 0 0";

// A typed getter or a card action.
template <typename R>
Command number(const char* name, R (MVX2Interfaces::*method)(), const std::string& request,
               const std::string& reply, const std::string& result, const std::string& label,
               const std::string& neutral) {
  const std::string ofEmptyReply = std::is_same_v<R, bool> ? "false" : "0";
  return {name,    call(method), 0x00,    request, framed(reply), result, ofEmptyReply,
          neutral, label,        neutral, {}};
}

Command list(const char* name, unsigned int* (MVX2Interfaces::*method)(), const std::string& request,
             const std::string& reply, const std::string& result, const std::string& label) {
  return {name, call(method), 0x00, request, framed(reply), result, zeros, zeros, label, zeros, {}};
}

// A text getter.
Command text(const char* name, const char* (MVX2Interfaces::*method)(), const std::string& request,
             const std::string& label, const std::string& withoutChannel = no_connected) {
  return {name,           call(method), 0x00,         request, framed(" 0x12, ok"), " 0x12, ok", "",
          withoutChannel, label,        no_connected, {}};
}

template <typename T>
Command setter(const char* name, int (MVX2Interfaces::*method)(T), T value, const std::string& request,
               const std::string& label) {
  return {name,  call(method, value), 0x00, request, framed("-31 ok"), "-31", "0", "-999999",
          label, "-999999",           {}};
}

// A text setter; the text it is given is "1 b".
Command textSetter(const char* name, const char* (MVX2Interfaces::*method)(const char*),
                   const std::string& request, const std::string& label,
                   const std::string& withoutChannel = unchanged) {
  return {name, call(method, "1 b"), 0x00,  request,      framed("set, 1 b"),   "set, 1 b",
          "",   withoutChannel,      label, no_connected, call(method, nullptr)};
}

Command order(const char* name, const Call& call, const std::string& request, const std::string& label,
              const Call& withNullText = {}) {
  return {name,      call,      0x00,  request,   framed("0"), "nothing",
          "nothing", "nothing", label, "nothing", withNullText};
}

Command prompt(const char* name, bool (MVX2Interfaces::*method)(), const std::string& reply,
               const std::string& label) {
  return {name, call(method), 0x00, "\r", reply, "true", "false", "false", label, "false", {}};
}

// The argument of setters, in the type that they take.
constexpr unsigned char byte(unsigned char value) { return value; }
constexpr unsigned short word(unsigned short value) { return value; }

}  // namespace

const std::vector<Command>& commands() {
  // clang-format off
  static const std::vector<Command> table = {
      // Read commands:   method, request, reply, result, label, neutral value. Texts: method, request, label.
      number(METHOD(getValue), "value\r", "1234", "1234", "value : ", "-1"),
      text(METHOD(getValue_CPtr), "value\r", "value : ", unchanged),
      number(METHOD(getCredit), "credit\r", "-250", "-250", "credit : ", "-1"),
      text(METHOD(getCredit_CPtr), "credit\r", "creditStr : "),
      number(METHOD(getDebit), "debit\r", "99", "99", "debit : ", "-1"),
      text(METHOD(getDebit_CPtr), "debit\r", "debitStr : "),
      number(METHOD(getWrerrs), "wrerrs\r", "3", "3", "wrerrs : ", "-1"),
      text(METHOD(getWrerrs_CPtr), "wrerrs\r", "wrerrsStr : "),
      number(METHOD(getTrs), "trs\r", "70000", "70000", "trs : ", "-1"),
      text(METHOD(getTrs_CPtr), "trs\r", "trsStr : "),
      number(METHOD(getCCredit), "ccredit\r", "70000", "4464", "cCredit : ", "65535"),
      text(METHOD(getCCredit_CPtr), "ccredit\r", "cCredit : "),
      number(METHOD(getCDebit), "cdebit\r", "65537", "1", "cDebit : ", "65535"),
      text(METHOD(getCDebit_CPtr), "cdebit\r", "cDebit : "),
      number(METHOD(getCTrs), "ctrs\r", "70001", "70001", "cTrs : ", "-1"),
      text(METHOD(getCTrs_CPtr), "ctrs\r", "cTrs : "),
      number(METHOD(getPMode), "pmode\r", "258", "2", "cTrs : ", "255"),
      text(METHOD(getPMode_CPtr), "pmode\r", "cTrs : "),
      number(METHOD(getPurse), "purse\r", "12", "12", "purse : ", "-1"),
      text(METHOD(getPurse_CPtr), "purse\r", "purse : "),
      number(METHOD(getMaxVal), "maxval\r", "1000000", "1000000", "maxVal : ", "-1"),
      text(METHOD(getMaxVal_CPtr), "maxval\r", "maxVal : "),
      number(METHOD(getAddVal), "addval\r", "256", "true", "addVal : ", "false"),
      text(METHOD(getAddVal_CPtr), "addval\r", "addVal : "),
      number(METHOD(getSerial), "serial\r", "987654321", "987654321", "serial : ", "-1"),
      text(METHOD(getSerial_CPtr), "serial\r", "serial : "),
      number(METHOD(getAccount), "account\r", "123456", "123456", "account : ", "-1"),
      text(METHOD(getAccount_CPtr), "account\r", "account : "),
      number(METHOD(getPincode), "pincode\r", "74773", "9237", "pincode : ", "65535"),
      text(METHOD(getPincode_CPtr), "pincode\r", "pincode : "),
      number(METHOD(getDepartment), "department\r", "65534", "65534", "department : ", "65535"),
      text(METHOD(getDepartment_CPtr), "department\r", "department : "),
      number(METHOD(getCategory), "category\r", "200", "200", "category : ", "255"),
      text(METHOD(getCategory_CPtr), "category\r", "category : "),
      number(METHOD(getPts), "pts\r", "256", "0", "pts : ", "255"),
      text(METHOD(getPts_CPtr), "pts\r", "pts : "),
      number(METHOD(getPtsI), "ptsi\r", "511", "255", "ptsI : ", "255"),
      text(METHOD(getPtsI_CPtr), "ptsi\r", "ptsI : "),
      number(METHOD(getMode), "mode\r", "4", "4", "mode : ", "255"),
      text(METHOD(getMode_CPtr), "mode\r", "mode : "),
      number(METHOD(getUOffset), "uoffset\r", "300", "44", "uOffset : ", "255"),
      text(METHOD(getUOffset_CPtr), "uoffset\r", "uOffset : ", unchanged),
      number(METHOD(getUSector), "usector\r", "15", "15", "uSector : ", "255"),
      text(METHOD(getUSector_CPtr), "usector\r", "uSector : "),
      number(METHOD(getUOption), "uoption\r", "12AB", "4779", "uOption : ", "65535"),
      text(METHOD(getUOption_CPtr), "uoption\r", "uOption : "),
      number(METHOD(getUFlagId), "uflagid\r", "0xffff0001", "1", "uFlagId : ", "65535"),
      text(METHOD(getUFlagId_CPtr), "uflagid\r", "uFlagId : "),
      number(METHOD(getIssuer), "issuer\r", "0x1234", "4660", "issuer : ", "65535"),
      text(METHOD(getIssuer_CPtr), "issuer\r", "issuer : "),
      number(METHOD(getFreq), "freq\r", "0X1fe", "254", "freq : ", "255"),
      text(METHOD(getFreq_CPtr), "freq\r", "freq : "),
      number(METHOD(getCardId), "cardid\r", "FFFFFF38", "-200", "cardId : ", "-1"),
      text(METHOD(getCardId_CPtr), "cardid\r", "cardId : "),
      number(METHOD(getSectors), "sectors\r", "0x1234", "4660", "sectors : ", "65535"),
      text(METHOD(getSectors_CPtr), "sectors\r", "sectors : "),
      number(METHOD(getSwitch), "switch\r", "1", "true", "switchCard : ", "false"),
      text(METHOD(getSwitch_CPtr), "switch\r", "switchCard : "),
      number(METHOD(getLastMVX2), "lastmvx2\r", "42", "42", "lastMVX2 : ", "-1"),
      text(METHOD(getLastMVX2_CPtr), "lastmvx2\r", "lastMVX2 : "),
      list(METHOD(getListPurses), "listpurses\r", "3\r\n7\r\n12", "3 7 12 0 0 0 0 0 0 0", "listpurses : "),
      text(METHOD(getListPurses_CPtr), "listpurses\r", "listpurses : "),
      list(METHOD(getListGrp), "listgrp\r", "1\r\n2", "1 2 0 0 0 0 0 0 0 0", "listpurses : "),
      text(METHOD(getListGrp_CPtr), "listgrp\r", "listgrp : "),

      // Card actions.
      number(METHOD(readCard), "read\r", "1", "1", "read : ", "-999999"),
      text(METHOD(readCard_CPtr), "read\r", "read : "),
      number(METHOD(fReadCard), "fread\r", "-2", "-2", "fread : ", "-999999"),
      text(METHOD(fReadCard_CPtr), "fread\r", "fread : "),
      number(METHOD(writeCard), "write\r", "3", "3", "write : ", "-999999"),
      text(METHOD(writeCard_CPtr), "write\r", "write : "),
      number(METHOD(persoread), "persoread\r", "4", "4", "persoread : ", "-999999"),
      text(METHOD(persoread_CPtr), "persoread\r", "persoread : "),
      number(METHOD(persocreate), "persocreate\r", "5", "5", "persocreate : ", "-999999"),
      text(METHOD(persocreate_CPtr), "persocreate\r", "persocreate : "),
      number(METHOD(addGrp), "addgrp\r", "6", "6", "addgrp : ", "-999999"),
      text(METHOD(addGrp_CPtr), "addgrp\r", "addgrp : "),

      // Write commands: method, value, request, label.
      setter(METHOD(setValue), -5, "value -5\r", "value : "),
      textSetter(METHOD(setValue_CPtr), "value 1 b\r", "value : "),
      setter(METHOD(setPurse), 7U, "purse 7\r", "purse : "),
      textSetter(METHOD(setPurse_CPtr), "purse 1 b\r", "purse : "),
      setter(METHOD(chPurse), 8U, "chpurse 8\r", "chpurse : "),
      textSetter(METHOD(chPurse_CPtr), "chpurse 1 b\r", "chpurse : "),
      setter(METHOD(delPurse), 9U, "delpurse 9\r", "delpurse : "),
      textSetter(METHOD(delPurse_CPtr), "delpurse 1 b\r", "delpurse : "),
      setter(METHOD(delGrp), 4294967295U, "delgrp -1\r", "delgrp : "),
      textSetter(METHOD(delGrp_CPtr), "delgrp 1 b\r", "delgrp : "),
      setter(METHOD(setMaxVal), 3000000000U, "maxval -1294967296\r", "maxVal : "),
      textSetter(METHOD(setMaxVal_CPtr), "maxval 1 b\r", "maxVal : "),
      setter(METHOD(setAddVal), true, "addval 1\r", "addVal : "),
      textSetter(METHOD(setAddVal_CPtr), "addval 1 b\r", "addVal : "),
      setter(METHOD(setAccount), 2147483648U, "account -2147483648\r", "account : "),
      textSetter(METHOD(setAccount_CPtr), "account 1 b\r", "account : "),
      setter(METHOD(setPincode), word(65535), "pincode 65535\r", "pincode : "),
      textSetter(METHOD(setPincode_CPtr), "pincode 1 b\r", "pincode : "),
      setter(METHOD(setDepartment), word(1200), "department 1200\r", "department : "),
      textSetter(METHOD(setDepartment_CPtr), "department 1 b\r", "department : "),
      setter(METHOD(setCategory), byte(200), "category 200\r", "category : "),
      textSetter(METHOD(setCategory_CPtr), "category 1 b\r", "category : "),
      setter(METHOD(setPts), byte(255), "pts 255\r", "pts : "),
      textSetter(METHOD(setPts_CPtr), "pts 1 b\r", "pts : "),
      setter(METHOD(setPtsI), byte(0), "ptsi 0\r", "ptsI : "),
      textSetter(METHOD(setPtsI_CPtr), "ptsi 1 b\r", "ptsI : "),
      setter(METHOD(setMode), byte(65), "mode 65\r", "mode : "),
      textSetter(METHOD(setMode_CPtr), "mode 1 b\r", "mode : "),
      setter(METHOD(setUOffset), byte(128), "uoffset 128\r", "uOffset : "),
      textSetter(METHOD(setUOffset_CPtr), "uoffset 1 b\r", "uOffset : "),
      setter(METHOD(setUSector), byte(48), "usector 48\r", "uSector : "),
      textSetter(METHOD(setUSector_CPtr), "usector 1 b\r", "uSector : "),
      setter(METHOD(setUOption), word(0x1234), "uoption 4660\r", "uOption : "),
      textSetter(METHOD(setUOption_CPtr), "uoption 1 b\r", "uOption : "),
      setter(METHOD(setUFlagId), word(0xFFFE), "uflagid 65534\r", "uFlagId : "),
      textSetter(METHOD(setUFlagId_CPtr), "uflagid 1 b\r", "uFlagId : "),
      setter(METHOD(setIssuer), word(0x1234), "issuer 4660\r", "issuer : "),
      textSetter(METHOD(setIssuer_CPtr), "issuer 1 b\r", "issuer : "),
      setter(METHOD(setFreq), -2147483647, "freq -2147483647\r", "freq : "),
      textSetter(METHOD(setFreq_CPtr), "freq 1 b\r", "freq : "),
      setter(METHOD(setSectors1), word(2571), "sectors 0xa0b\r", "sectors : "),
      {"setSectors2", call(&MVX2Interfaces::setSectors2, 9, 255), 0x00, "sectors 255\r", framed("17"), "17",
       "0", "-999999", "sectors : ", "-999999", {}},
      textSetter(METHOD(setSectors_CPtr), "sectors 1 b\r", "sectors : "),

      // Keys: neither getter nor setter shows a stale text.
      textSetter(METHOD(setFreeKey1_CPtr), "freekey1 1 b\r", "freeKey1 : ", no_connected),
      text(METHOD(getFreeKey1_CPtr), "freekey1\r", "freeKey1 : "),
      textSetter(METHOD(setFreeKey2_CPtr), "freekey2 1 b\r", "freeKey2 : ", no_connected),
      text(METHOD(getFreeKey2_CPtr), "freekey2\r", "freeKey2 : "),
      textSetter(METHOD(setMadKey_CPtr), "madkey 1 b\r", "madKey : ", no_connected),
      text(METHOD(getMadKey_CPtr), "madkey\r", "madKey : "),
      textSetter(METHOD(setUKeyA_CPtr), "ukeya 1 b\r", "uKeyA : ", no_connected),
      text(METHOD(getUKeyA_CPtr), "ukeya\r", "uKeyA : "),

      // Raw exchanges. The status byte 90 belongs to what comes back, the 00 behind it ends the text.
      textSetter(METHOD(transaction), "1 b\r", "transaction : ", no_connected),
      {"noFormatedTransaction", call(&MVX2Interfaces::noFormatedTransaction, "a b"), 0x00, "a b", "a b\r\n#",
       "a b\r\n#\x90", "", "No connected", "noFormatedTransaction : ", "No connected",
       call(&MVX2Interfaces::noFormatedTransaction, nullptr)},
      {"sendAPDU", call(&MVX2Interfaces::sendAPDU, "\x01\x02\x03", 3), 0x01, "\x01\x02\x03", "raw", "raw\x90", "",
       "", "value : ", "No connected", {}},

      // Control of the terminal.
      text(METHOD(getVersion_CPtr), "version\r", "version : "),
      text(METHOD(getBootVersion_CPtr), "vboot\r", "bootversion : "),
      order("beep", call(&MVX2Interfaces::beep, 5), "beep 5\r", "beep : "),
      order("beep_CPtr", call(&MVX2Interfaces::beep_CPtr, "1 b"), "beep 1 b\r", "beep : ",
            call(&MVX2Interfaces::beep_CPtr, nullptr)),
      order("reboot", call(&MVX2Interfaces::reboot), "reboot\r", "reboot : "),
      order("quit", call(&MVX2Interfaces::quit), "q\r", "quit : "),
      order("online", call(&MVX2Interfaces::online), "online\r", "online : "),
      prompt(METHOD(isBootloader), "\r\n#", "isBootloader : "),
      prompt(METHOD(isOnline), "\r\n$", "isOnline : "),
  };
  // clang-format on
  return table;
}

}  // namespace mvx2test
