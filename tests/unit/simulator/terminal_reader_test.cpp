#include "Reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

using mvx2sim::Bytes;
using mvx2sim::makeTerminalReader;
using mvx2sim::Reader;

namespace {

Bytes carry(unsigned char p1, const std::string& text) {
  Bytes apdu = {0xFF, 0x00, p1, 0x00, static_cast<unsigned char>(text.size())};
  std::copy(text.begin(), text.end(), std::back_inserter(apdu));
  return apdu;
}

Bytes reply(Reader& reader, const Bytes& apdu) { return reader.transmit(apdu).reply; }

Bytes answered(const std::string& text) {
  Bytes bytes(text.begin(), text.end());
  bytes.insert(bytes.end(), {0x90, 0x00});
  return bytes;
}

class TerminalReader : public testing::Test {
 protected:
  std::unique_ptr<Reader> reader = makeTerminalReader();
};

}  // namespace

TEST_F(TerminalReader, AnnouncesTheAnswerAndHandsItOutWithItsStatus) {
  EXPECT_EQ(reply(*reader, carry(0x00, "credit\r")), (Bytes{0x61, 15}));
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 15}), answered("credit\r\n1250\r\n>"));
}

TEST_F(TerminalReader, HandsAnAnswerOutOnce) {
  reply(*reader, carry(0x00, "credit\r"));
  reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 15});
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 15}), (Bytes{0x69, 0x85}));
}

TEST_F(TerminalReader, HandsOutNoMoreThanIsAskedFor) {
  reply(*reader, carry(0x00, "credit\r"));
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 6}), answered("credit"));
}

TEST_F(TerminalReader, TakesZeroAsAllThatWaits) {
  reply(*reader, carry(0x00, "\r"));
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 0x00}), answered("\r\n>"));
}

TEST_F(TerminalReader, FillsAReplyOf69BytesAtMost) {
  EXPECT_EQ(reply(*reader, carry(0x00, std::string(63, 'x') + "\r")), (Bytes{0x61, 67}));
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 67}).size(), 69U);
}

TEST_F(TerminalReader, PassesARawCommandToTheCard) {
  EXPECT_EQ(reply(*reader, carry(0x01, std::string("\xFF\xCA\0\0\0", 5))), (Bytes{0x61, 6}));
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x00, 0x00, 6}),
            (Bytes{0x4B, 0x1D, 0x5E, 0x27, 0x90, 0x00, 0x90, 0x00}));
}

TEST_F(TerminalReader, AnnouncesNothingForNothing) {
  EXPECT_EQ(reply(*reader, carry(0x00, "")), (Bytes{0x61, 0x00}));
}

TEST_F(TerminalReader, RefusesAnLcThatIsNotTheLengthOfTheData) {
  for (const Bytes& apdu :
       {Bytes{}, Bytes{0xFF}, Bytes{0xFF, 0x00, 0x00, 0x00}, Bytes{0xFF, 0x00, 0x00, 0x00, 1},
        Bytes{0xFF, 0x00, 0x00, 0x00, 255, 'a'}, Bytes{0xFF, 0x00, 0x00, 0x00, 1, 'a', 'b'},
        Bytes{0xFF, 0xC0, 0x00, 0x00, 1, 'a'}})
    EXPECT_EQ(reply(*reader, apdu), (Bytes{0x67, 0x00}));
}

TEST_F(TerminalReader, RefusesOtherClassesInstructionsAndParameters) {
  EXPECT_EQ(reply(*reader, {0x80, 0x00, 0x00, 0x00, 0}), (Bytes{0x6E, 0x00}));
  EXPECT_EQ(reply(*reader, {0xFF, 0x01, 0x00, 0x00, 0}), (Bytes{0x6D, 0x00}));
  EXPECT_EQ(reply(*reader, {0xFF, 0x00, 0x02, 0x00, 0}), (Bytes{0x6B, 0x00}));
  EXPECT_EQ(reply(*reader, {0xFF, 0x00, 0x00, 0x01, 0}), (Bytes{0x6B, 0x00}));
  EXPECT_EQ(reply(*reader, {0xFF, 0xC0, 0x01, 0x00, 0}), (Bytes{0x6B, 0x00}));
}

TEST_F(TerminalReader, IsSetAndReadByLinesOfControl) {
  EXPECT_EQ(reader->control("set credit 500"), "OK");
  EXPECT_EQ(reader->control("get credit"), "500");
  EXPECT_EQ(reader->control("set listpurses 3 7 12"), "OK");
  EXPECT_EQ(reader->control("get listpurses"), "3 7 12");
  EXPECT_EQ(reader->control("set listpurses"), "OK");
  EXPECT_EQ(reader->control("get listpurses"), "");
}

TEST_F(TerminalReader, CountsWhatIsTransmitted) {
  reply(*reader, carry(0x00, "\r"));
  reply(*reader, {});
  EXPECT_EQ(reader->control("get transmits"), "2");
}

TEST_F(TerminalReader, RefusesLinesOfControlThatItDoesNotUnderstand) {
  for (const char* line : {"", "get", "set", "fault", "card", "hello world", "card up", "get credit now",
                           "fault nothing", "set nothing 1", "set credit x", "get nothing"})
    EXPECT_EQ(reader->control(line).substr(0, 4), "ERR ") << line;
}

TEST_F(TerminalReader, LosesItsCardAndGetsItBack) {
  EXPECT_TRUE(reader->cardPresent());
  EXPECT_EQ(reader->control("card out"), "OK");
  EXPECT_FALSE(reader->cardPresent());
  EXPECT_EQ(reader->control("card in"), "OK");
  EXPECT_TRUE(reader->cardPresent());
}
