#include "pcsc_names.h"

#include "text.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace mvx2tool {

namespace {

struct Status {
  std::uint32_t code;
  const char* name;
  const char* meaning;
  const char* remedy;
};

constexpr const char* program_fault = "a fault of the program: report it with the output of mvx2 -v";
constexpr const char* replug = "unplug the reader and plug it in again, then run mvx2 doctor";
constexpr const char* place_card = "put the card back and try again";
constexpr const char* not_here = "does not occur with pcscd; look at the log of the program that shows it";
constexpr const char* restart_daemon = "sudo systemctl restart pcscd.socket pcscd.service";

constexpr Status statuses[] = {
    {0x00000000, "SCARD_S_SUCCESS", "no error", "none is needed"},
    {0x80100001, "SCARD_F_INTERNAL_ERROR", "pcscd or the reader's driver failed inside", restart_daemon},
    {0x80100002, "SCARD_E_CANCELLED", "the call was cancelled by the program", "try again"},
    {0x80100003, "SCARD_E_INVALID_HANDLE",
     "the connection to pcscd or the card is not known to pcscd (any more)",
     "connect again; pcscd was restarted, or the reader was unplugged"},
    {0x80100004, "SCARD_E_INVALID_PARAMETER", "an argument of the call is wrong", program_fault},
    {0x80100005, "SCARD_E_INVALID_TARGET", "the start-up information is missing", not_here},
    {0x80100006, "SCARD_E_NO_MEMORY", "not enough memory", "free memory, then restart pcscd"},
    {0x80100007, "SCARD_F_WAITED_TOO_LONG", "an internal timer has run out", restart_daemon},
    {0x80100008, "SCARD_E_INSUFFICIENT_BUFFER", "the reply is longer than the program can take",
     "ask for less at a time"},
    {0x80100009, "SCARD_E_UNKNOWN_READER", "no reader has this name (any more)",
     "plug the reader in; mvx2 doctor lists those that are there"},
    {0x8010000A, "SCARD_E_TIMEOUT", "the time that was granted has run out", "try again"},
    {0x8010000B, "SCARD_E_SHARING_VIOLATION", "another program uses the reader for itself alone",
     "end the other program, then try again"},
    {0x8010000C, "SCARD_E_NO_SMARTCARD", "the reader shows no card, or the terminal behind it is off",
     "switch the terminal on, or insert the SAM"},
    {0x8010000D, "SCARD_E_UNKNOWN_CARD", "the card's name is not known", not_here},
    {0x8010000E, "SCARD_E_CANT_DISPOSE", "the card cannot be left in the state asked for", replug},
    {0x8010000F, "SCARD_E_PROTO_MISMATCH",
     "the card speaks neither T=0 nor T=1, or another program chose a protocol",
     "end the other program, then try again"},
    {0x80100010, "SCARD_E_NOT_READY", "the reader or the card cannot take commands yet",
     "wait a second, then try again"},
    {0x80100011, "SCARD_E_INVALID_VALUE", "a value in the call is wrong", program_fault},
    {0x80100012, "SCARD_E_SYSTEM_CANCELLED", "the system cancelled the call", "try again"},
    {0x80100013, "SCARD_F_COMM_ERROR", "the program and pcscd do not understand each other", restart_daemon},
    {0x80100014, "SCARD_F_UNKNOWN_ERROR", "an error that pcscd has no name for", restart_daemon},
    {0x80100015, "SCARD_E_INVALID_ATR", "the card's answer to reset is malformed", replug},
    {0x80100016, "SCARD_E_NOT_TRANSACTED", "the exchange with the reader failed",
     "check the cable, then try again; if it stays, unplug the reader and plug it in again"},
    {0x80100017, "SCARD_E_READER_UNAVAILABLE", "the reader was unplugged", "plug the reader in"},
    {0x80100018, "SCARD_P_SHUTDOWN", "the system shuts down", "try again after the restart"},
    {0x80100019, "SCARD_E_PCI_TOO_SMALL", "the protocol information does not fit", program_fault},
    {0x8010001A, "SCARD_E_READER_UNSUPPORTED", "the reader's driver lacks what pcscd needs",
     "install the reader's driver"},
    {0x8010001B, "SCARD_E_DUPLICATE_READER", "two readers got the same name", restart_daemon},
    {0x8010001C, "SCARD_E_CARD_UNSUPPORTED", "the card lacks what pcscd needs", "use another card"},
    {0x8010001D, "SCARD_E_NO_SERVICE", "pcscd does not run, or its socket cannot be reached",
     "sudo systemctl start pcscd.socket"},
    {0x8010001E, "SCARD_E_SERVICE_STOPPED", "pcscd has stopped", "sudo systemctl start pcscd.socket"},
    {0x8010001F, "SCARD_E_UNEXPECTED", "an unexpected error, or a feature that is not supported",
     restart_daemon},
    {0x80100020, "SCARD_E_ICC_INSTALLATION", "the card has no provider", not_here},
    {0x80100021, "SCARD_E_ICC_CREATEORDER", "this order of creation is not supported", not_here},
    {0x80100022, "SCARD_E_UNSUPPORTED_FEATURE", "the feature is not supported", not_here},
    {0x80100023, "SCARD_E_DIR_NOT_FOUND", "the card has no such directory", not_here},
    {0x80100024, "SCARD_E_FILE_NOT_FOUND", "the card has no such file", not_here},
    {0x80100025, "SCARD_E_NO_DIR", "the path is no directory of the card", not_here},
    {0x80100026, "SCARD_E_NO_FILE", "the path is no file of the card", not_here},
    {0x80100027, "SCARD_E_NO_ACCESS", "the card denies access to the file", not_here},
    {0x80100028, "SCARD_E_WRITE_TOO_MANY", "the card is full", not_here},
    {0x80100029, "SCARD_E_BAD_SEEK", "the position in the card's file is wrong", not_here},
    {0x8010002A, "SCARD_E_INVALID_CHV", "the PIN is wrong", not_here},
    {0x8010002B, "SCARD_E_UNKNOWN_RES_MNG", "a layer below gave an unknown error", restart_daemon},
    {0x8010002C, "SCARD_E_NO_SUCH_CERTIFICATE", "the certificate does not exist", not_here},
    {0x8010002D, "SCARD_E_CERTIFICATE_UNAVAILABLE", "the certificate cannot be had", not_here},
    {0x8010002E, "SCARD_E_NO_READERS_AVAILABLE", "pcscd sees no reader at all",
     "plug the reader in; if it is, install its driver: sudo apt-get install libccid"},
    {0x8010002F, "SCARD_E_COMM_DATA_LOST", "data was lost between reader and card", "try again"},
    {0x80100030, "SCARD_E_NO_KEY_CONTAINER", "the key container does not exist", not_here},
    {0x80100031, "SCARD_E_SERVER_TOO_BUSY", "pcscd has too many clients", "end programs that use readers"},
    {0x80100065, "SCARD_W_UNSUPPORTED_CARD", "the reader cannot talk to this card", "use another card"},
    {0x80100066, "SCARD_W_UNRESPONSIVE_CARD", "the card does not answer the reset",
     "turn the card over or clean its contacts"},
    {0x80100067, "SCARD_W_UNPOWERED_CARD", "the card has no power", place_card},
    {0x80100068, "SCARD_W_RESET_CARD", "another program has reset the card", "connect again"},
    {0x80100069, "SCARD_W_REMOVED_CARD", "the card was taken out", place_card},
    {0x8010006A, "SCARD_W_SECURITY_VIOLATION", "this user may not use pcscd (a rule of polkit)",
     "run as root, or allow org.debian.pcsc-lite.access_pcsc and .access_card in /etc/polkit-1/rules.d"},
    {0x8010006B, "SCARD_W_WRONG_CHV", "the PIN is wrong", not_here},
    {0x8010006C, "SCARD_W_CHV_BLOCKED", "the PIN is blocked", not_here},
    {0x8010006D, "SCARD_W_EOF", "the end of the card's file", not_here},
    {0x8010006E, "SCARD_W_CANCELLED_BY_USER", "the user cancelled", "try again"},
    {0x8010006F, "SCARD_W_CARD_NOT_AUTHENTICATED", "no PIN was given", not_here},
};

constexpr Status unknown_status = {0, "unknown status", "pcsc-lite does not name this status",
                                   "look it up in the documentation of the reader's driver"};

// A status word whose bits under the mask are zero is one of a family, whose second byte tells a number.
struct Word {
  unsigned code;
  unsigned mask;
  const char* name;
  const char* meaning;
  const char* remedy;
};

constexpr const char* try_again = "try again; if it stays, replace the card";

constexpr Word words[] = {
    {0x9000, 0xFFFF, "done", "done", "none is needed"},
    {0x90AF, 0xFFFF, "more follows", "the SAM did this step and waits for the next", "none is needed"},
    {0x9000, 0xFF00, "done", "done, with a note in the second byte", "none is needed"},
    {0x6100, 0xFF00, "answer waits", "done; the second byte says how many bytes wait to be fetched",
     "fetch them: mvx2 does"},
    {0x6283, 0xFFFF, "file deactivated", "done, but the file is deactivated", "activate the file"},
    {0x6200, 0xFF00, "warning", "done, with a warning; nothing was changed", "check the result"},
    {0x63C0, 0xFFF0, "tries left", "the check failed; the last digit says how many tries are left",
     "check key or PIN before the next try"},
    {0x6300, 0xFF00, "warning", "the check failed, or done with a warning; something may have changed",
     "check key and result"},
    {0x6400, 0xFF00, "execution error", "not done; nothing was changed", try_again},
    {0x6581, 0xFFFF, "memory failure", "writing to the card's memory failed", "replace the card"},
    {0x6500, 0xFF00, "execution error", "not done; something may have changed", try_again},
    {0x6700, 0xFFFF, "wrong length", "the command's length is wrong", "check Lc, data and Le of the APDU"},
    {0x6800, 0xFF00, "function not supported", "the class asks for what the card cannot do",
     "check the CLA byte"},
    {0x6982, 0xFFFF, "security status not satisfied", "an authentication has to come first, or it failed",
     "authenticate first; for the SAM: mvx2 sam unlock --key-file FILE"},
    {0x6983, 0xFFFF, "authentication blocked", "the key or PIN is blocked after too many wrong tries",
     "unblock or replace the card"},
    {0x6984, 0xFFFF, "reference data not usable", "the key cannot be used for this", "use another key"},
    {0x6985, 0xFFFF, "conditions not satisfied", "something has to be done first, or no card lies there",
     "put a card there; send the commands in their order"},
    {0x6986, 0xFFFF, "command not allowed", "no file is selected", "select a file first"},
    {0x6988, 0xFFFF, "wrong MAC", "the message's MAC is wrong", "authenticate again"},
    {0x6900, 0xFF00, "command not allowed", "the command is not allowed now",
     "send the commands in their order"},
    {0x6A80, 0xFFFF, "wrong data", "the data of the command is wrong", "check the data"},
    {0x6A81, 0xFFFF, "function not supported", "the card cannot do this", "use another command"},
    {0x6A82, 0xFFFF, "file not found", "the file or application does not exist", "check its name"},
    {0x6A83, 0xFFFF, "record not found", "the record does not exist", "check its number"},
    {0x6A84, 0xFFFF, "no space", "the file is full", "delete something first"},
    {0x6A86, 0xFFFF, "wrong P1 P2", "the parameters are wrong", "check P1 and P2"},
    {0x6A88, 0xFFFF, "key not found", "the key or data referred to does not exist",
     "check the key's number and version"},
    {0x6A00, 0xFF00, "wrong parameters", "the parameters are wrong", "check P1 and P2"},
    {0x6B00, 0xFFFF, "wrong P1 P2", "the parameters are wrong or outside the file", "check P1 and P2"},
    {0x6C00, 0xFF00, "wrong Le", "the second byte is the Le to ask with",
     "send the command again with that Le"},
    {0x6D00, 0xFFFF, "instruction not supported", "the instruction is not known", "check the INS byte"},
    {0x6E00, 0xFFFF, "class not supported", "the class is not known", "check the CLA byte"},
    {0x6F00, 0xFFFF, "unknown error", "no exact diagnosis", try_again},
};

struct UnlockStatus {
  long code;
  const char* name;
  const char* meaning;
  const char* remedy;
};

constexpr UnlockStatus unlock_statuses[] = {
    {0, "UNLOCK_FAILED", "the last reply was too short, or no random numbers could be had", "try again"},
    {-1, "UNLOCK_STATUS_WORD", "step 1 or 2: the SAM refused, most often because of a wrong key",
     "use the key of this SAM"},
    {-2, "UNLOCK_MAC", "the SAM's proof or the length of its reply is wrong", "use the key of this SAM"},
    {-3, "UNLOCK_REFUSED", "the SAM refused, most often because of a wrong key, or its reply was too short",
     "use the key of this SAM"},
    {-5, "UNLOCK_NO_RANDOM", "\"/dev/urandom\" cannot be opened", "make /dev/urandom readable"},
};

const Status& find(std::uint32_t code) {
  const auto* const found = std::find_if(std::begin(statuses), std::end(statuses),
                                         [code](const Status& status) { return status.code == code; });
  return found == std::end(statuses) ? unknown_status : *found;
}

const Status* findNamed(const std::string& name) {
  const auto* const found = std::find_if(std::begin(statuses), std::end(statuses),
                                         [&name](const Status& status) { return name == status.name; });
  return found == std::end(statuses) ? nullptr : found;
}

std::string upperCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

}  // namespace

const char* statusName(std::uint32_t status) { return find(status).name; }

const char* statusRemedy(std::uint32_t status) { return find(status).remedy; }

Explanation explainStatus(std::uint32_t status) {
  const Status& found = find(status);
  return {"PC/SC status", "0x" + hexDigits(status, 8), found.name, found.meaning, found.remedy};
}

Explanation explainStatusWord(unsigned statusWord) {
  const std::string digits = hexDigits(statusWord, 4);
  const std::string code = digits.substr(0, 2) + " " + digits.substr(2);
  const auto* const found = std::find_if(std::begin(words), std::end(words), [statusWord](const Word& word) {
    return (statusWord & word.mask) == word.code;
  });
  if (found == std::end(words))
    return {"status word", code, "unknown status word", "ISO/IEC 7816-4 does not name this status word",
            "look it up in the documentation of the card"};
  return {"status word", code, found->name, found->meaning, found->remedy};
}

Explanation explainUnlock(long status) {
  const auto* const found =
      std::find_if(std::begin(unlock_statuses), std::end(unlock_statuses),
                   [status](const UnlockStatus& entry) { return entry.code == status; });
  if (found == std::end(unlock_statuses)) return explainStatus(static_cast<std::uint32_t>(status));
  return {"unlock status", std::to_string(status), found->name, found->meaning, found->remedy};
}

std::optional<Explanation> explainText(const std::string& code) {
  std::string text = upperCase(trimmed(code));
  if (const Status* const status = findNamed(text)) return explainStatus(status->code);
  text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
  if (text == "-1" || text == "-2" || text == "-3" || text == "-5") return explainUnlock(std::stol(text));
  if (hasHexPrefix(text)) text.erase(0, 2);
  const auto number = parseHexadecimal(text);
  if (!number) return std::nullopt;
  if (text.size() == 4) return explainStatusWord(static_cast<unsigned>(*number));
  if (text.size() != 8 && *number != 0) return std::nullopt;
  return explainStatus(static_cast<std::uint32_t>(*number));
}

}  // namespace mvx2tool
