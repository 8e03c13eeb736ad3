#include <mvx2/MVX2Exception.h>

#include <gtest/gtest.h>

#include <climits>
#include <locale>
#include <type_traits>

namespace {

std::string textOf(const char* message, long code, const char* function, const char* file, int line) {
  return MVX2Exception(message, code, function, file, line).what();
}

TEST(MVX2ExceptionText, NamesMessageCodeFunctionFileAndLine) {
  EXPECT_EQ(textOf("SCardConnect", 97, "USBChannel", "USBChannel", 97),
            "SCardConnect (0x61) [USBChannel:USBChannel:97]");
}

TEST(MVX2ExceptionText, PrintsTheCodeZeroAsOneDigit) {
  EXPECT_EQ(textOf("null Pointer", 0, "channelIsReady", "MVX2Interfaces", 118),
            "null Pointer (0x0) [channelIsReady:MVX2Interfaces:118]");
}

TEST(MVX2ExceptionText, PrintsANegativeCodeAsEightDigits) {
  EXPECT_EQ(textOf("m", -1, "f", "s", 1), "m (0xffffffff) [f:s:1]");
}

TEST(MVX2ExceptionText, PrintsAPcscStatusWhateverTheWidthOfLong) {
  constexpr auto no_service = static_cast<long>(0x8010001DUL);
  EXPECT_EQ(textOf("SCardEstablishContext", no_service, "USBChannel", "USBChannel", 26),
            "SCardEstablishContext (0x8010001d) [USBChannel:USBChannel:26]");
}

TEST(MVX2ExceptionText, KeepsTheLow32BitsOfALongerCode) {
  if (sizeof(long) < 8) GTEST_SKIP() << "long has 32 bits here";
  EXPECT_EQ(textOf("m", LONG_MAX - 0xF, "f", "s", 1), "m (0xfffffff0) [f:s:1]");
}

TEST(MVX2ExceptionText, PrintsANegativeLineWithItsSign) {
  EXPECT_EQ(textOf("m", 1, "f", "s", -7), "m (0x1) [f:s:-7]");
}

TEST(MVX2ExceptionText, IsEmptyForANullMessage) { EXPECT_EQ(textOf(nullptr, 1, "f", "s", 1), ""); }

TEST(MVX2ExceptionText, EndsWhereANullFunctionStood) {
  EXPECT_EQ(textOf("m", 1, nullptr, "s", 1), "m (0x1) [");
}

TEST(MVX2ExceptionText, EndsWhereANullFileStood) {
  EXPECT_EQ(textOf("m", 1, "f", nullptr, 1), "m (0x1) [f:");
}

// A locale that groups digits, as a host application may install globally.
struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

TEST(MVX2ExceptionText, IsNotLocalised) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  const std::string text = textOf("m", 0x1234, "f", "s", 5678);
  std::locale::global(before);
  EXPECT_EQ(text, "m (0x1234) [f:s:5678]");
}

TEST(MVX2ExceptionText, StaysTheSameInACopy) {
  const MVX2Exception original("m", 1, "f", "s", 1);
  MVX2Exception copy("other", 2, "g", "t", 2);
  copy = original;
  EXPECT_STREQ(copy.what(), original.what());
}

TEST(MVX2ExceptionType, IsAStandardException) {
  EXPECT_TRUE((std::is_base_of_v<std::exception, MVX2Exception>));
}

}  // namespace
