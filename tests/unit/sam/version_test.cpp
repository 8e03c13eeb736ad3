#include "connected_channel.h"
#include "unlock_vector.h"

#include <algorithm>
#include <ostream>

namespace {

using mvx2test::a_failure;
using mvx2test::Bytes;
using mvx2test::Calls;
using mvx2test::joined;
using mvx2test::ScriptedPcsc;
using mvx2test::unhex;

const Bytes a_serial = {0x04, 0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6};

// Hardware and software record, both of version 3.2, and the serial number with what follows it.
Bytes record() {
  return joined(joined(unhex("04 01 01 03 02 18 05  04 01 01 03 02 18 05"), a_serial),
                unhex("BA 34 56 78 90 12 05  90 00"));
}

class SamVersion : public mvx2test::ConnectedChannel {
 protected:
  // Reads the version into an array that holds 0xEE everywhere else.
  bool read(char outSize = 7) { return channel.getVersion(out.data(), status, outSize); }
  Bytes got(std::size_t length = 7) const { return {out.begin(), out.begin() + static_cast<long>(length)}; }

  std::vector<char> out = std::vector<char>(256, '\xEE');
  long status = 77;
};

TEST_F(SamVersion, IsAskedForWithOneCommand) {
  pcsc.reply(record());
  read();
  EXPECT_EQ(sent(), Calls{"80 60 00 00 00"});
}

TEST_F(SamVersion, YieldsTheSerialNumber) {
  pcsc.reply(record());
  EXPECT_TRUE(read());
  EXPECT_EQ(status, 0);
  EXPECT_EQ(got(), a_serial);
}

TEST_F(SamVersion, WritesSevenBytesWhateverTheSizeThatIsCleared) {
  pcsc.reply(record());
  EXPECT_TRUE(read(0));
  EXPECT_EQ(got(8), joined(a_serial, {0xEE}));
}

TEST_F(SamVersion, ClearsAsManyBytesAsTheSizeSaysFrom0To255) {
  pcsc.reply(record());
  EXPECT_TRUE(read(static_cast<char>(200)));
  EXPECT_EQ(got(201), joined(joined(a_serial, Bytes(193, 0x00)), {0xEE}));
}

// ---- the record

struct RecordByte {
  std::size_t index;
  int value;
  bool matches;
};

void PrintTo(const RecordByte& byte, std::ostream* out) {
  *out << "byte " << byte.index << " = " << byte.value;
}

class SamVersionRecord : public SamVersion, public testing::WithParamInterface<RecordByte> {};

TEST_P(SamVersionRecord, IsCheckedByteByByte) {
  Bytes reply = record();
  reply[GetParam().index] = static_cast<unsigned char>(GetParam().value);
  pcsc.reply(reply);
  EXPECT_EQ(read(), GetParam().matches);
  EXPECT_EQ(status, GetParam().matches ? 0 : -1);
  EXPECT_EQ(got(), GetParam().matches ? a_serial : Bytes(7, 0x00));
}

std::vector<RecordByte> recordBytes() {
  std::vector<RecordByte> bytes;
  for (const std::size_t start : {0U, 7U}) {
    for (const int value : {0x00, 0x03, 0x05, 0x84, 0xFF}) bytes.push_back({start, value, false});
    for (const std::size_t type : {1U, 2U})
      for (const int value : {0x00, 0x02, 0x81, 0xFF}) bytes.push_back({start + type, value, false});
    for (const int value : {0x00, 0x01, 0x02}) bytes.push_back({start + 3, value, false});
    for (const int value : {0x03, 0x7F, 0x80, 0xFF}) bytes.push_back({start + 3, value, true});
    for (const int value : {0x00, 0x01}) bytes.push_back({start + 4, value, false});
    for (const int value : {0x02, 0x7F, 0x80, 0xFF}) bytes.push_back({start + 4, value, true});
    for (const std::size_t free : {5U, 6U})
      for (const int value : {0x00, 0xFF}) bytes.push_back({start + free, value, true});
  }
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(Bytes, SamVersionRecord, testing::ValuesIn(recordBytes()));

TEST_F(SamVersion, DoesNotLookAtTheStatusWord) {
  Bytes reply = record();
  reply.back() = 0xAF;
  pcsc.reply(reply);
  EXPECT_TRUE(read());
}

// ---- short replies and failures

TEST_F(SamVersion, TellsNoMismatchForAReplyShorterThanFiveBytes) {
  for (std::size_t length = 0; length < 5; ++length) {
    pcsc.reply(Bytes(length, 0x04));
    status = 77;
    EXPECT_FALSE(read()) << length;
    EXPECT_EQ(status, 0) << length;
  }
}

TEST_F(SamVersion, TellsAMismatchFromFiveBytesOn) {
  pcsc.reply(unhex("04 01 01 03 02"));
  EXPECT_FALSE(read());
  EXPECT_EQ(status, -1);
}

TEST_F(SamVersion, FillsASerialNumberThatAShortReplyLacksWithZeros) {
  Bytes reply = record();
  reply.resize(16);
  pcsc.reply(reply);
  EXPECT_TRUE(read());
  EXPECT_EQ(got(), (Bytes{0x04, 0xA1, 0, 0, 0, 0, 0}));
}

TEST_F(SamVersion, LeavesTheStatusAloneWhenTheExchangeFails) {
  pcsc.reply({record(), a_failure});
  EXPECT_FALSE(read());
  EXPECT_EQ(status, 77);
  EXPECT_EQ(got(8), joined(Bytes(7, 0x00), {0xEE}));
}

// ---- on a channel that is not connected

class UnconnectedSamVersion : public testing::Test {
 protected:
  void SetUp() override {
    pcsc.reset();
    pcsc.readers = {"ACS SAM 00 00"};
  }
  bool read() { return channel.getVersion(out.data(), status, 7); }

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
  SAMChannel channel;
  std::vector<char> out = std::vector<char>(7, '\xEE');
  long status = 77;
};

TEST_F(UnconnectedSamVersion, IsNotReadByTheCallThatConnects) {
  pcsc.reply(record());
  EXPECT_FALSE(read());
  EXPECT_TRUE(channel.isConnected());
  EXPECT_TRUE(pcsc.apdus.empty());
  EXPECT_EQ(status, 77);
  EXPECT_EQ(out, std::vector<char>(7, '\xEE'));
}

TEST_F(UnconnectedSamVersion, IsReadByTheNextCall) {
  pcsc.reply(record());
  read();
  EXPECT_TRUE(read());
  EXPECT_EQ(Bytes(out.begin(), out.end()), a_serial);
}

TEST_F(UnconnectedSamVersion, IsAskedForAfterAConnectThatFailed) {
  pcsc.fail("SCardEstablishContext", a_failure);
  EXPECT_FALSE(read());
  EXPECT_EQ(pcsc.calls, (Calls{"SCardEstablishContext(scope 2)", "SCardBeginTransaction(card 0)"}));
  EXPECT_EQ(status, 77);
  EXPECT_EQ(out, std::vector<char>(7, '\0'));
}

TEST_F(UnconnectedSamVersion, IsReadWhenOnlyTheFreeOfTheReaderListFailed) {
  pcsc.fail("SCardFreeMemory", a_failure);
  pcsc.reply(record());
  EXPECT_TRUE(read());
  EXPECT_EQ(Bytes(out.begin(), out.end()), a_serial);
}

TEST_F(UnconnectedSamVersion, IsNeverReadWhileNoReaderQualifies) {
  pcsc.readers = {"KRV"};
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(read());
  EXPECT_TRUE(pcsc.apdus.empty());
}

}  // namespace
