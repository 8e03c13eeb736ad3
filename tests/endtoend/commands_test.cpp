// Every readable and writable value through the library, the daemon and the simulated terminal.
#include <mvx2/MVX2Interfaces.h>

#include "support/simulator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using mvx2test::sim;
using namespace std::string_literals;
using velmorin::MVX2Interfaces;

class Values : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(facade->connect(1, velmorin::CONNECT_DEFAULT)); }
  void TearDown() override { facade->releaseInstance(); }

  MVX2Interfaces* facade = MVX2Interfaces::getInstance(1);
};

// They are called with std::invoke: in (facade->*getter)() GCC 12's sanitizers check a `this` that they have
// worked out only for virtual functions.
using TextGetter = const char* (MVX2Interfaces::*)();
using TextSetter = const char* (MVX2Interfaces::*)(const char*);
using Read = std::function<std::int64_t(MVX2Interfaces&)>;

// Reads with a typed getter.
template <typename T>
Read by(T (MVX2Interfaces::*getter)()) {
  return [getter](MVX2Interfaces& facade) -> std::int64_t { return (facade.*getter)(); };
}

struct Readable {
  std::string word;
  std::string set;    // what the terminal is given behind the library's back
  std::string shown;  // how it prints that
  std::int64_t value;
  Read read;
  TextGetter readText;
};

const std::vector<Readable>& readables() {
  using M = MVX2Interfaces;
  static const std::vector<Readable> table = {
      {"value", "-12", "-12", -12, by(&M::getValue), &M::getValue_CPtr},
      {"credit", "2147483647", "2147483647", 2147483647, by(&M::getCredit), &M::getCredit_CPtr},
      {"debit", "-2147483648", "-2147483648", INT32_MIN, by(&M::getDebit), &M::getDebit_CPtr},
      {"wrerrs", "5", "5", 5, by(&M::getWrerrs), &M::getWrerrs_CPtr},
      {"trs", "99999", "99999", 99999, by(&M::getTrs), &M::getTrs_CPtr},
      {"ccredit", "65535", "65535", 65535, by(&M::getCCredit), &M::getCCredit_CPtr},
      {"cdebit", "256", "256", 256, by(&M::getCDebit), &M::getCDebit_CPtr},
      {"ctrs", "70000", "70000", 70000, by(&M::getCTrs), &M::getCTrs_CPtr},
      {"pmode", "255", "255", 255, by(&M::getPMode), &M::getPMode_CPtr},
      {"purse", "9", "9", 9, by(&M::getPurse), &M::getPurse_CPtr},
      {"maxval", "123456", "123456", 123456, by(&M::getMaxVal), &M::getMaxVal_CPtr},
      {"addval", "1", "1", 1, by(&M::getAddVal), &M::getAddVal_CPtr},
      {"serial", "31415926", "31415926", 31415926, by(&M::getSerial), &M::getSerial_CPtr},
      {"account", "815", "815", 815, by(&M::getAccount), &M::getAccount_CPtr},
      {"pincode", "9999", "9999", 9999, by(&M::getPincode), &M::getPincode_CPtr},
      {"department", "65535", "65535", 65535, by(&M::getDepartment), &M::getDepartment_CPtr},
      {"category", "200", "200", 200, by(&M::getCategory), &M::getCategory_CPtr},
      {"pts", "255", "255", 255, by(&M::getPts), &M::getPts_CPtr},
      {"ptsi", "128", "128", 128, by(&M::getPtsI), &M::getPtsI_CPtr},
      {"mode", "7", "7", 7, by(&M::getMode), &M::getMode_CPtr},
      {"uoffset", "44", "44", 44, by(&M::getUOffset), &M::getUOffset_CPtr},
      {"usector", "15", "15", 15, by(&M::getUSector), &M::getUSector_CPtr},
      {"uoption", "4660", "0x1234", 4660, by(&M::getUOption), &M::getUOption_CPtr},
      {"uflagid", "65535", "0xFFFF", 65535, by(&M::getUFlagId), &M::getUFlagId_CPtr},
      {"issuer", "171", "0x00AB", 171, by(&M::getIssuer), &M::getIssuer_CPtr},
      {"freq", "254", "0xFE", 254, by(&M::getFreq), &M::getFreq_CPtr},
      {"cardid", "4294967096", "0xFFFFFF38", -200, by(&M::getCardId), &M::getCardId_CPtr},
      {"sectors", "2571", "0x0A0B", 2571, by(&M::getSectors), &M::getSectors_CPtr},
      {"switch", "0", "0", 0, by(&M::getSwitch), &M::getSwitch_CPtr},
      {"lastmvx2", "42", "42", 42, by(&M::getLastMVX2), &M::getLastMVX2_CPtr},
  };
  return table;
}

TEST_F(Values, AreReadAsTheTerminalHoldsThem) {
  for (const Readable& value : readables()) {
    SCOPED_TRACE(value.word);
    sim("set " + value.word + " " + value.set);
    EXPECT_EQ(value.read(*facade), value.value);
    EXPECT_STREQ(std::invoke(value.readText, *facade), value.shown.c_str());
  }
}

struct Writable {
  std::string word;
  std::function<int(MVX2Interfaces&)> write;
  std::int64_t value;  // that write() has written, and read() reads back
  Read read;
  TextSetter writeText;
};

const std::vector<Writable>& writables() {
  using M = MVX2Interfaces;
  static const std::vector<Writable> table = {
      {"value", [](M& m) { return m.setValue(-7); }, -7, by(&M::getValue), &M::setValue_CPtr},
      {"purse", [](M& m) { return m.setPurse(5); }, 5, by(&M::getPurse), &M::setPurse_CPtr},
      {"maxval", [](M& m) { return m.setMaxVal(2147483647); }, 2147483647, by(&M::getMaxVal),
       &M::setMaxVal_CPtr},
      {"addval", [](M& m) { return m.setAddVal(true); }, 1, by(&M::getAddVal), &M::setAddVal_CPtr},
      {"account", [](M& m) { return m.setAccount(987654); }, 987654, by(&M::getAccount), &M::setAccount_CPtr},
      {"pincode", [](M& m) { return m.setPincode(4321); }, 4321, by(&M::getPincode), &M::setPincode_CPtr},
      {"department", [](M& m) { return m.setDepartment(65535); }, 65535, by(&M::getDepartment),
       &M::setDepartment_CPtr},
      {"category", [](M& m) { return m.setCategory(255); }, 255, by(&M::getCategory), &M::setCategory_CPtr},
      {"pts", [](M& m) { return m.setPts(200); }, 200, by(&M::getPts), &M::setPts_CPtr},
      {"ptsi", [](M& m) { return m.setPtsI(65); }, 65, by(&M::getPtsI), &M::setPtsI_CPtr},
      {"mode", [](M& m) { return m.setMode(4); }, 4, by(&M::getMode), &M::setMode_CPtr},
      {"uoffset", [](M& m) { return m.setUOffset(129); }, 129, by(&M::getUOffset), &M::setUOffset_CPtr},
      {"usector", [](M& m) { return m.setUSector(39); }, 39, by(&M::getUSector), &M::setUSector_CPtr},
      {"uoption", [](M& m) { return m.setUOption(0xABCD); }, 0xABCD, by(&M::getUOption), &M::setUOption_CPtr},
      {"uflagid", [](M& m) { return m.setUFlagId(0x00FF); }, 0x00FF, by(&M::getUFlagId), &M::setUFlagId_CPtr},
      {"issuer", [](M& m) { return m.setIssuer(0x1235); }, 0x1235, by(&M::getIssuer), &M::setIssuer_CPtr},
      {"freq", [](M& m) { return m.setFreq(0x7F); }, 0x7F, by(&M::getFreq), &M::setFreq_CPtr},
      {"sectors", [](M& m) { return m.setSectors2(9, 255); }, 255, by(&M::getSectors), &M::setSectors_CPtr},
  };
  return table;
}

TEST_F(Values, AreReadBackAsTheyWereWritten) {
  for (const Writable& value : writables()) {
    SCOPED_TRACE(value.word);
    EXPECT_EQ(value.write(*facade), value.value) << "the terminal answers with what it took";
    EXPECT_EQ(value.read(*facade), value.value);
  }
}

TEST_F(Values, AreReadBackAsTheyWereWrittenAsTexts) {
  for (const Writable& value : writables()) {
    SCOPED_TRACE(value.word);
    EXPECT_STREQ(std::invoke(value.writeText, *facade, "1"), "1");
    EXPECT_EQ(value.read(*facade), 1);
  }
}

TEST_F(Values, OfTheSectorWordAreReadBackAsTheyWereWrittenInHexadecimal) {
  for (const unsigned short sectors : {std::uint16_t{0}, std::uint16_t{2571}, std::uint16_t{65535}}) {
    facade->setSectors1(sectors);
    EXPECT_EQ(facade->getSectors(), sectors);
  }
}

TEST_F(Values, OfKeysAreReadBackAsTheyWereWritten) {
  using M = MVX2Interfaces;
  const std::vector<std::pair<TextSetter, TextGetter>> keys = {
      {&M::setFreeKey1_CPtr, &M::getFreeKey1_CPtr},
      {&M::setFreeKey2_CPtr, &M::getFreeKey2_CPtr},
      {&M::setMadKey_CPtr, &M::getMadKey_CPtr},
      {&M::setUKeyA_CPtr, &M::getUKeyA_CPtr},
  };
  // All first, so that no two of them are kept in one place.
  std::string key = "0123456789A0";
  for (const auto& [write, read] : keys) {
    ++key.back();
    EXPECT_STREQ(std::invoke(write, *facade, key.c_str()), key.c_str());
  }
  key.back() = '0';
  for (const auto& [write, read] : keys) {
    ++key.back();
    EXPECT_STREQ(std::invoke(read, *facade), key.c_str());
  }
}

// ---- lists

std::vector<unsigned int> tenOf(const unsigned int* list) { return {list, list + 10}; }

TEST_F(Values, OfPursesChangeWithTheTerminalsList) {
  sim("set listpurses 1 2 5");
  EXPECT_EQ(facade->chPurse(9), 9);
  EXPECT_EQ(facade->getPurse(), 9);
  EXPECT_EQ(facade->delPurse(2), 2);
  EXPECT_EQ(tenOf(facade->getListPurses()), (std::vector{1U, 5U, 9U, 0U, 0U, 0U, 0U, 0U, 0U, 0U}));

  EXPECT_STREQ(facade->chPurse_CPtr("12"), "12");
  EXPECT_STREQ(facade->delPurse_CPtr("1"), "1");
  EXPECT_STREQ(facade->getListPurses_CPtr(), "5\n9\n12");
}

TEST_F(Values, OfGroupsChangeWithTheTerminalsList) {
  sim("set listgrp 1 4");
  EXPECT_EQ(facade->addGrp(), 2);
  EXPECT_STREQ(facade->addGrp_CPtr(), "3");
  EXPECT_EQ(facade->delGrp(4), 4);
  EXPECT_EQ(tenOf(facade->getListGrp()), (std::vector{1U, 2U, 3U, 0U, 0U, 0U, 0U, 0U, 0U, 0U}));

  EXPECT_STREQ(facade->delGrp_CPtr("1"), "1");
  EXPECT_STREQ(facade->getListGrp_CPtr(), "2\n3");
}

// ---- card and terminal

TEST_F(Values, OfCardActionsSayWhetherACardIsThere) {
  using M = MVX2Interfaces;
  const std::vector<std::pair<int (M::*)(), TextGetter>> actions = {
      {&M::readCard, &M::readCard_CPtr},       {&M::fReadCard, &M::fReadCard_CPtr},
      {&M::writeCard, &M::writeCard_CPtr},     {&M::persoread, &M::persoread_CPtr},
      {&M::persocreate, &M::persocreate_CPtr},
  };
  for (const auto& [act, actText] : actions) {
    sim("set switch 1");
    EXPECT_EQ(std::invoke(act, *facade), 1);
    EXPECT_STREQ(std::invoke(actText, *facade), "1");
    sim("set switch 0");
    EXPECT_EQ(std::invoke(act, *facade), 0) << "an error text has no digits";
    EXPECT_STREQ(std::invoke(actText, *facade), "ERR card");
  }
}

TEST_F(Values, OfTheCardComeBackFromARawBuffer) {
  sim("set cardid 305419896");
  const char apdu[] = {'\xFF', '\xCA', 0, 0, 0};
  EXPECT_EQ(std::string(facade->sendAPDU(apdu, sizeof apdu), 8), "\x12\x34\x56\x78\x90\0\x90\0"s);
}

TEST_F(Values, OfTheTerminalCountItsBeeps) {
  facade->beep(0);
  facade->beep(20);
  facade->beep_CPtr("5");
  EXPECT_EQ(sim("get beeps"), "3");
}

TEST_F(Values, OfTheTerminalTellItsVersions) {
  EXPECT_STREQ(facade->getVersion_CPtr(), "MVX3 SIM V1.0");
  EXPECT_STREQ(facade->getBootVersion_CPtr(), "BOOT SIM V1.0");
}

}  // namespace
