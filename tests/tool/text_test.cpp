#include "text.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using mvx2tool::hexBytes;
using mvx2tool::hexDigits;
using mvx2tool::lines;
using mvx2tool::parseDecimal;
using mvx2tool::parseHexadecimal;
using mvx2tool::parseHexBytes;
using mvx2tool::printable;
using mvx2tool::unescaped;

TEST(Decimal, IsTheWholeTextOrNothing) {
  EXPECT_EQ(parseDecimal("-12"), -12);
  for (const char* const text : {"", " 1", "1 ", "+1", "1x", "0x1", "99999999999999999999"})
    EXPECT_FALSE(parseDecimal(text)) << text;
}

TEST(Hexadecimal, IsTheWholeTextOrNothing) {
  EXPECT_EQ(parseHexadecimal("fF"), 255);
  for (const char* const text : {"", "0x1", "-1", "1G", " 1"}) EXPECT_FALSE(parseHexadecimal(text)) << text;
}

TEST(HexBytes, AllowBlanksAndColonsBetweenThem) {
  EXPECT_EQ(parseHexBytes("00 a4:FF"), "\x00\xA4\xFF"s);
  EXPECT_EQ(parseHexBytes(""), "");
}

TEST(HexBytes, AreWholeBytes) {
  EXPECT_FALSE(parseHexBytes("123"));
  EXPECT_FALSE(parseHexBytes("1G"));
  EXPECT_FALSE(parseHexBytes("-1"));
}

TEST(HexBytes, ArePrintedWithTwoDigitsEach) { EXPECT_EQ(hexBytes("\x00\x0A\xFF"s), "000AFF"); }

TEST(HexDigits, AreAtLeastAsManyAsAskedFor) {
  EXPECT_EQ(hexDigits(0xA5, 4), "00A5");
  EXPECT_EQ(hexDigits(0x12345, 4), "12345");
  EXPECT_EQ(hexDigits(0, 1), "0");
}

TEST(Printable, ShowsWhatCouldSteerAScreenAsEscapes) {
  EXPECT_EQ(printable("a\x1B[2J\r\n\x7F\xE9\\"), "a\\x1B[2J\\r\\n\\x7F\\xE9\\\\");
}

TEST(Escapes, BecomeTheirBytes) { EXPECT_EQ(unescaped("a\\r\\n\\t\\\\\\x41\\x00b"), "a\r\n\t\\A\0b"s); }

TEST(Escapes, AreTheReverseOfPrintable) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(unescaped(printable(all)), all);
}

TEST(Escapes, OfAnotherKindAreNone) {
  for (const char* const text : {"\\", "\\q", "\\x", "\\x4", "\\xG1", "\\x-1"})
    EXPECT_FALSE(unescaped(text)) << text;
}

TEST(Lines, EndWithALineFeedOrTheText) {
  EXPECT_EQ(lines("a\n\nb"), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(lines("a\n"), (std::vector<std::string>{"a"}));
  EXPECT_TRUE(lines("").empty());
}

}  // namespace
