#include "values.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using mvx2tool::allValues;
using mvx2tool::Exit;
using mvx2tool::Failure;
using mvx2tool::findValue;
using mvx2tool::parseArgument;
using mvx2tool::parseReading;
using mvx2tool::print;
using mvx2tool::Reading;
using mvx2tool::Value;

TEST(Values, HaveDifferentNames) {
  std::set<std::string> names;
  for (const Value& value : allValues()) EXPECT_TRUE(names.insert(value.name).second) << value.name;
}

TEST(Values, AreAllThatTheLibraryReads) { EXPECT_EQ(allValues().size(), 32U); }

TEST(Reading, OfADecimalValueIsItsWholeText) {
  const Value& value = findValue("credit");
  EXPECT_EQ(parseReading(value, "-12"), Reading{-12});
  EXPECT_EQ(parseReading(value, " 12 "), Reading{12});
  for (const char* const text : {"", "12 DM", "ERR value", "0x12"})
    EXPECT_FALSE(parseReading(value, text)) << text;
}

TEST(Reading, OfAHexadecimalValueMayHaveAPrefix) {
  const Value& value = findValue("issuer");
  EXPECT_EQ(parseReading(value, "0x12aB"), Reading{0x12AB});
  EXPECT_EQ(parseReading(value, "0X1"), Reading{1});
  EXPECT_EQ(parseReading(value, "7"), Reading{7});
  for (const char* const text : {"", "0x", "0xG", "ERR", "0x10000", "-1"})
    EXPECT_FALSE(parseReading(value, text)) << text;
}

TEST(Reading, OutsideItsTypeIsNone) {
  EXPECT_EQ(parseReading(findValue("pts"), "255"), Reading{255});
  EXPECT_FALSE(parseReading(findValue("pts"), "256"));
  EXPECT_FALSE(parseReading(findValue("pts"), "-1"));
}

TEST(Reading, OfAListHasOneNumberALine) {
  const Value& value = findValue("listgrp");
  EXPECT_EQ(parseReading(value, "3\n7\n12"), (Reading{3, 7, 12}));
  EXPECT_EQ(parseReading(value, ""), Reading{});
  EXPECT_FALSE(parseReading(value, "3\nERR"));
}

TEST(Argument, IsTakenInBothBases) {
  EXPECT_EQ(parseArgument(findValue("pts"), "0xff"), 255);
  EXPECT_EQ(parseArgument(findValue("pts"), "17"), 17);
  EXPECT_EQ(parseArgument(findValue("value"), "-2147483648"), -2147483648LL);
}

TEST(Argument, OutsideTheTypeIsMisuse) {
  for (const char* const text : {"256", "-1", "0x100", "x", ""}) {
    try {
      parseArgument(findValue("pts"), text);
      ADD_FAILURE() << text;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.problem().exit, Exit::usage) << text;
    }
  }
}

TEST(Printed, ValuesReadBackAsTheyWere) {
  for (const Value& value : allValues())
    for (const std::int64_t number : {value.min, value.max}) {
      if (value.kind == mvx2tool::Kind::list) continue;
      EXPECT_EQ(parseReading(value, print(value, {number})), Reading{number}) << value.name;
    }
}

TEST(WireText, IsHexadecimalForTheSectorWordAlone) {
  EXPECT_EQ(mvx2tool::wireText(findValue("sectors"), 2571), "0xa0b");
  EXPECT_EQ(mvx2tool::wireText(findValue("issuer"), 0x1234), "4660");
}

TEST(KeyText, IsWholeBytesInHexadecimal) {
  EXPECT_TRUE(mvx2tool::isKeyText("A0a1"));
  for (const char* const text : {"", "A", "ERR value", "A0A1A2A3A4AG"})
    EXPECT_FALSE(mvx2tool::isKeyText(text)) << text;
}

}  // namespace
