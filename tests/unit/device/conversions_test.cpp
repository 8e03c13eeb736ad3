#include "device/conversions.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using mvx2::decimal;
using mvx2::hexadecimal;
using mvx2::lastLineStartsWith;
using namespace std::string_literals;

// ---- decimal numbers

TEST(Decimal, EndsAtTheFirstNonDigit) { EXPECT_EQ(decimal("12abc"), 12); }

TEST(Decimal, IsZeroWithoutADigit) {
  for (const char* text : {"", "error", "-", "+", "  ", "+-5", "- 5", "x1"})
    EXPECT_EQ(decimal(text), 0) << text;
}

TEST(Decimal, TakesLeadingBlanksAndASign) {
  EXPECT_EQ(decimal(" \t\r\n\v\f-42"), -42);
  EXPECT_EQ(decimal("  +42"), 42);
}

TEST(Decimal, IsNotReadAsOctalOrHexadecimal) {
  EXPECT_EQ(decimal("010"), 10);
  EXPECT_EQ(decimal("0x10"), 0);
}

TEST(Decimal, EndsAtANul) { EXPECT_EQ(decimal("12\0003"s), 12); }

TEST(Decimal, StopsAtTheLimitsOfLong) {
  EXPECT_EQ(decimal("99999999999999999999"), std::numeric_limits<long>::max());
  EXPECT_EQ(decimal("-99999999999999999999"), std::numeric_limits<long>::min());
}

// ---- hexadecimal numbers

TEST(Hexadecimal, IsZeroForAnEmptyText) { EXPECT_EQ(hexadecimal(""), 0U); }

TEST(Hexadecimal, OfOneCharacterIsItsDigit) {
  EXPECT_EQ(hexadecimal("0"), 0U);
  EXPECT_EQ(hexadecimal("7"), 7U);
  EXPECT_EQ(hexadecimal("a"), 10U);
  EXPECT_EQ(hexadecimal("F"), 15U);
}

TEST(Hexadecimal, CountsAStrayCharacterAs255AndGoesOn) {
  for (const char* text : {"x", "G", "g", " ", "-", "/", ":", "@", "`", "\n", "\xFF"})
    EXPECT_EQ(hexadecimal(text), 255U) << text;
  EXPECT_EQ(hexadecimal("0x1G"), 271U);
  EXPECT_EQ(hexadecimal("1 2"), 256U + 255 * 16 + 2);
  EXPECT_EQ(hexadecimal("1\0"s), 16U + 255);
}

TEST(Hexadecimal, SkipsAPrefixOfEitherCase) {
  EXPECT_EQ(hexadecimal("0x1234"), 0x1234U);
  EXPECT_EQ(hexadecimal("0X1234"), 0x1234U);
}

TEST(Hexadecimal, IsZeroForAPrefixAlone) {
  EXPECT_EQ(hexadecimal("0x"), 0U);
  EXPECT_EQ(hexadecimal("0X"), 0U);
}

TEST(Hexadecimal, SkipsThePrefixOnceAndOnlyAtTheStart) {
  EXPECT_EQ(hexadecimal("0x0x1"), 255U * 16 + 1);
  EXPECT_EQ(hexadecimal("00x1"), 255U * 16 + 1);
  EXPECT_EQ(hexadecimal("x1"), 255U * 16 + 1);
}

TEST(Hexadecimal, ReadsEveryDigitOfEitherCase) {
  EXPECT_EQ(hexadecimal("01234567"), 0x01234567U);
  EXPECT_EQ(hexadecimal("89abcdef"), 0x89ABCDEFU);
  EXPECT_EQ(hexadecimal("89ABCDEF"), 0x89ABCDEFU);
}

TEST(Hexadecimal, KeepsTheLow32Bits) {
  EXPECT_EQ(hexadecimal("123456789"), 0x23456789U);
  EXPECT_EQ(hexadecimal("GGGGGGGG"), 255U * 0x11111111U);
}

TEST(Hexadecimal, DoesNotReadBehindItsText) {
  EXPECT_EQ(hexadecimal(std::string_view("0x1", 1)), 0U);
  EXPECT_EQ(hexadecimal(std::string_view("12", 1)), 1U);
}

// ---- lists

// What a list of `count` entries, all 99 before, holds afterwards.
std::vector<unsigned int> lines(const std::string& text, std::size_t count = 4) {
  std::vector<unsigned int> values(count, 99);
  mvx2::decimalLines(text, values.data(), values.size());
  return values;
}

TEST(DecimalLines, TakeOneNumberFromEachLine) { EXPECT_EQ(lines("3\n7\n12", 3), (std::vector{3U, 7U, 12U})); }

TEST(DecimalLines, LeaveWhatFollowsTheLastLineAlone) {
  EXPECT_EQ(lines("3"), (std::vector{3U, 99U, 99U, 99U}));
}

TEST(DecimalLines, CountTheEmptyTextBehindTheLastLineFeedAsZero) {
  EXPECT_EQ(lines("3\n7\n"), (std::vector{3U, 7U, 0U, 99U}));
}

TEST(DecimalLines, CountAnEmptyOrBlankLineAsZero) {
  EXPECT_EQ(lines("\n7\n\n9"), (std::vector{0U, 7U, 0U, 9U}));
  EXPECT_EQ(lines("3\n \t\n7\nx1"), (std::vector{3U, 0U, 7U, 0U}));
}

TEST(DecimalLines, DropWhatHasNoRoom) { EXPECT_EQ(lines("1\n2\n3", 2), (std::vector{1U, 2U})); }

TEST(DecimalLines, ReadALineUpToItsNul) { EXPECT_EQ(lines("1\0002\n3"s, 2), (std::vector{1U, 3U})); }

TEST(DecimalLines, KeepTheLow32BitsOfANumber) { EXPECT_EQ(lines("-1", 1), std::vector{4294967295U}); }

TEST(DecimalLines, IgnoreCarriageReturnsBehindANumber) {
  EXPECT_EQ(lines("3\r\n7\r", 2), (std::vector{3U, 7U}));
}

// ---- prompts

TEST(LastLine, StartsWithThePromptBehindTheLastLineFeed) {
  EXPECT_TRUE(lastLineStartsWith("\r\n#\x90", '#'));
  EXPECT_TRUE(lastLineStartsWith("$\n#", '#'));
  EXPECT_FALSE(lastLineStartsWith("$\n#", '$'));
}

TEST(LastLine, StartsWithNothingInATextWithoutALineFeed) {
  EXPECT_FALSE(lastLineStartsWith("#", '#'));
  EXPECT_FALSE(lastLineStartsWith("", '#'));
}

TEST(LastLine, StartsWithNothingIfTheTextEndsWithALineFeed) {
  EXPECT_FALSE(lastLineStartsWith("#\n", '#'));
  EXPECT_FALSE(lastLineStartsWith(std::string_view("\n#", 1), '#'));
}

TEST(LastLine, IsJudgedByItsFirstCharacterAlone) { EXPECT_FALSE(lastLineStartsWith("\n #", '#')); }

}  // namespace
