#include "connected_channel.h"

#include <climits>
#include <cstring>
#include <ostream>

namespace {

using mvx2test::a_failure;
using mvx2test::another_failure;
using mvx2test::Bytes;
using mvx2test::Calls;
using mvx2test::hex;
using mvx2test::ScriptedPcsc;

Calls operator+(Calls calls, const Calls& more) {
  calls.insert(calls.end(), more.begin(), more.end());
  return calls;
}

const Calls establish = {"SCardEstablishContext(scope 2)"};
const Calls list = {"SCardListReaders(context 1, auto-allocated)"};
const Calls connect = {"SCardConnect(context 1, ACS SAM 00 00, share 2, protocols 3)"};
const Calls freeList = {"SCardFreeMemory(context 1)"};
const Calls disconnect = {"SCardDisconnect(card 101, disposition 0)"};
const Calls release = {"SCardReleaseContext(context 1)"};

class SamLink : public testing::Test {
 protected:
  void SetUp() override {
    pcsc.reset();
    pcsc.readers = {"ACS SAM 00 00"};
  }

  // The name that SCardConnect was given; empty if it was not called.
  std::string connectedReader() const {
    for (const std::string& call : pcsc.calls)
      if (call.rfind("SCardConnect(", 0) == 0) {
        const std::size_t start = call.find(", ") + 2;
        return call.substr(start, call.find(", share") - start);
      }
    return "";
  }

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
};

// ---- connect

TEST_F(SamLink, ConnectsAndDisconnectsInThePrescribedOrder) {
  {
    SAMChannel channel;
    EXPECT_EQ(channel.connect(), SCARD_S_SUCCESS);
    EXPECT_TRUE(channel.isConnected());
  }
  EXPECT_EQ(pcsc.calls, establish + list + connect + freeList + disconnect + release);
  EXPECT_EQ(pcsc.openCards + pcsc.openContexts + pcsc.openLists, 0);
}

struct ConnectFailure {
  std::string failing;
  Calls calls;
  bool connected;
};

void PrintTo(const ConnectFailure& failure, std::ostream* out) { *out << failure.failing; }

class SamLinkConnectFailure : public SamLink, public testing::WithParamInterface<ConnectFailure> {};

TEST_P(SamLinkConnectFailure, IsReturnedAndEndsTheSequence) {
  pcsc.fail(GetParam().failing, a_failure);
  SAMChannel channel;
  EXPECT_EQ(channel.connect(), a_failure);
  EXPECT_EQ(pcsc.calls, GetParam().calls);
  EXPECT_EQ(channel.isConnected(), GetParam().connected);
}

INSTANTIATE_TEST_SUITE_P(AtEachCall, SamLinkConnectFailure,
                         testing::Values(ConnectFailure{"SCardEstablishContext", establish, false},
                                         ConnectFailure{"SCardListReaders", establish + list, false},
                                         ConnectFailure{"SCardConnect", establish + list + connect, false},
                                         ConnectFailure{"SCardFreeMemory",
                                                        establish + list + connect + freeList, true}),
                         [](const auto& test) { return test.param.failing; });

TEST_F(SamLink, SucceedsWithoutAConnectionWhenNoReaderQualifies) {
  pcsc.readers = {"KRV MVX3 Terminal 00 00"};
  SAMChannel channel;
  EXPECT_EQ(channel.connect(), SCARD_S_SUCCESS);
  EXPECT_FALSE(channel.isConnected());
  EXPECT_EQ(pcsc.calls, establish + list + freeList);
}

TEST_F(SamLink, ReturnsTheStatusOfTheFreeWhenNoReaderQualifies) {
  pcsc.readers = {"KRV MVX3 Terminal 00 00"};
  pcsc.fail("SCardFreeMemory", a_failure);
  SAMChannel channel;
  EXPECT_EQ(channel.connect(), a_failure);
  EXPECT_FALSE(channel.isConnected());
}

TEST_F(SamLink, SucceedsAtOnceWithAnEmptyReaderList) {
  pcsc.readers = {};
  SAMChannel channel;
  EXPECT_EQ(channel.connect(), SCARD_S_SUCCESS);
  EXPECT_FALSE(channel.isConnected());
  EXPECT_EQ(pcsc.calls, establish + list);
}

TEST_F(SamLink, SucceedsAtOnceWithoutAReaderList) {
  pcsc.listIsNull = true;
  SAMChannel channel;
  EXPECT_EQ(channel.connect(), SCARD_S_SUCCESS);
  EXPECT_FALSE(channel.isConnected());
  EXPECT_EQ(pcsc.calls, establish + list);
}

TEST_F(SamLink, ConnectsAnewWhenItIsAskedTwice) {
  SAMChannel channel;
  channel.connect();
  pcsc.calls.clear();
  EXPECT_EQ(channel.connect(), SCARD_S_SUCCESS);
  EXPECT_EQ(pcsc.calls, establish + list + connect + freeList);
}

TEST_F(SamLink, IsNotConnectedAfterASecondConnectThatFails) {
  SAMChannel channel;
  channel.connect();
  pcsc.fail("SCardEstablishContext", a_failure);
  EXPECT_EQ(channel.connect(), a_failure);
  EXPECT_FALSE(channel.isConnected());
}

// ---- which reader

struct Selection {
  std::vector<std::string> readers;
  std::string connected;
};

void PrintTo(const Selection& selection, std::ostream* out) {
  *out << testing::PrintToString(selection.readers);
}

class SamLinkSelection : public SamLink, public testing::WithParamInterface<Selection> {};

TEST_P(SamLinkSelection, IsTheLastThatQualifies) {
  pcsc.readers = GetParam().readers;
  SAMChannel channel;
  EXPECT_EQ(channel.connect(), SCARD_S_SUCCESS);
  EXPECT_EQ(connectedReader(), GetParam().connected);
  EXPECT_EQ(channel.isConnected(), !GetParam().connected.empty());
}

INSTANTIATE_TEST_SUITE_P(Readers, SamLinkSelection,
                         testing::Values(Selection{{"a CCID reader", "an ACS reader"}, "an ACS reader"},
                                         Selection{{"an ACS reader", "a CCID reader"}, "a CCID reader"},
                                         Selection{{"ACR38", "KRV MVX3"}, "ACR38"},
                                         Selection{{"xACRx"}, "xACRx"},
                                         Selection{{"KRV CCID", "MVX3"}, "KRV CCID"},
                                         Selection{{"acs", "acr", "ccid"}, ""},
                                         Selection{{"A C S", "CCI D", "AC", "CS"}, ""},
                                         Selection{{"ACS 1", "ACS 2", "x"}, "ACS 2"}));

// ---- protocol information

struct Protocol {
  DWORD active;
  std::string pci;
};

void PrintTo(const Protocol& protocol, std::ostream* out) { *out << protocol.pci; }

class SamLinkProtocol : public SamLink, public testing::WithParamInterface<Protocol> {};

TEST_P(SamLinkProtocol, GoesIntoTheProtocolInformation) {
  pcsc.activeProtocol = GetParam().active;
  SAMChannel channel;
  channel.connect();
  unsigned char response[69];
  unsigned long length = 0;
  channel.APDUTransaction(nullptr, 0, response, length, 0, 0, 0, 0, false, 0);
  const std::string sameTwice = "SCardTransmit(card 101, pci " + GetParam().pci + " " + GetParam().pci;
  EXPECT_EQ(pcsc.calls.at(5).rfind(sameTwice, 0), 0U) << pcsc.calls[5];
}

INSTANTIATE_TEST_SUITE_P(Protocols, SamLinkProtocol,
                         testing::Values(Protocol{1, "{1, 8}"}, Protocol{2, "{2, 8}"}, Protocol{4, "{4, 0}"},
                                         Protocol{0, "{0, 0}"}));

// ---- disconnect and destruction

using ConnectedSamLink = mvx2test::ConnectedChannel;

TEST_F(ConnectedSamLink, EndsTheCardConnectionAndThenTheContext) {
  EXPECT_EQ(channel.disconnect(), SCARD_S_SUCCESS);
  EXPECT_EQ(pcsc.calls, disconnect + release);
}

TEST_F(ConnectedSamLink, KeepsTheContextWhenTheCardConnectionCannotBeEnded) {
  pcsc.fail("SCardDisconnect", a_failure);
  EXPECT_EQ(channel.disconnect(), a_failure);
  EXPECT_EQ(pcsc.calls, disconnect);
}

TEST_F(ConnectedSamLink, ReturnsWhyTheContextCannotBeReleased) {
  pcsc.fail("SCardReleaseContext", a_failure);
  EXPECT_EQ(channel.disconnect(), a_failure);
}

TEST_F(ConnectedSamLink, StillCallsItselfConnectedAfterDisconnecting) {
  channel.disconnect();
  EXPECT_TRUE(channel.isConnected());
}

TEST_F(SamLink, DisconnectsAgainWhenItGoes) {
  {
    SAMChannel channel;
    channel.connect();
    channel.disconnect();
    pcsc.calls.clear();
  }
  EXPECT_EQ(pcsc.calls, disconnect + release);
}

TEST_F(SamLink, GoesOnDisconnectingThoughPcscFails) {
  {
    SAMChannel channel;
    channel.connect();
    pcsc.calls.clear();
    pcsc.fail("SCardDisconnect", a_failure);
    pcsc.fail("SCardReleaseContext", a_failure);
  }
  EXPECT_EQ(pcsc.calls, disconnect + release);
}

// ---- a channel that was never connected

const Calls disconnectNothing = {"SCardDisconnect(card 0, disposition 0)", "SCardReleaseContext(context 0)"};

TEST_F(SamLink, IsMadeWithoutAnyCallAndGoesWithBoth) {
  {
    SAMChannel channel;
    EXPECT_FALSE(channel.isConnected());
    EXPECT_EQ(pcsc.calls, Calls{});
  }
  EXPECT_EQ(pcsc.calls, disconnectNothing);
}

TEST_F(SamLink, RefusesAnExchangeWhenItWasNeverConnected) {
  SAMChannel channel;
  unsigned char response[69];
  unsigned long length = 7;
  EXPECT_EQ(channel.APDUTransaction(nullptr, 0, response, length, 0, 0, 0, 0, false, 0),
            SCARD_E_INVALID_HANDLE);
  EXPECT_EQ(length, 7U);
}

TEST_F(SamLink, ReturnsAStatusFromADisconnectWithoutAConnection) {
  EXPECT_EQ(SAMChannel().disconnect(), SCARD_E_INVALID_HANDLE);
}

// ---- as a channel

TEST_F(ConnectedSamLink, HasNoTextProtocol) {
  Channel& base = channel;
  EXPECT_EQ(base.mvx2Transaction("value"), "");
  EXPECT_EQ(base.mvx2NoFormattedTransaction("value\r"), "");
  EXPECT_EQ(base.mvx2APDUTransaction("data", 4), "");
  EXPECT_EQ(pcsc.calls, Calls{});
}

TEST_F(ConnectedSamLink, HasAnEmptyName) { EXPECT_STREQ(channel.name(), ""); }

// Pointers to virtual members hold the slot's offset (on ARM as it is, elsewhere plus one).
template <class Member>
std::size_t slotOf(Member member) {
  std::size_t offset = 0;
  std::memcpy(&offset, &member, sizeof offset);
  return offset / sizeof(void*);
}

TEST(SamChannelLayout, HasItsVirtualFunctionsInTheDocumentedOrder) {
  EXPECT_EQ(slotOf(&SAMChannel::formatMessage), 0U);
  EXPECT_EQ(slotOf(&SAMChannel::formatResponse), 1U);
  EXPECT_EQ(slotOf(&SAMChannel::mvx2NoFormattedTransaction), 4U);
  EXPECT_EQ(slotOf(&SAMChannel::mvx2APDUTransaction), 5U);
  EXPECT_EQ(slotOf(&SAMChannel::APDUTransaction), 6U);
}

TEST_F(ConnectedSamLink, HasItsDataInTheDocumentedOrder) {
  struct Fields {
    SCARDCONTEXT context;
    DWORD readersLength;
    SCARDHANDLE card;
    SCARD_IO_REQUEST* ioRequest;
    int connected;
  } fields;
  ASSERT_EQ(sizeof channel, sizeof(Channel) + sizeof fields);
  std::memcpy(&fields, reinterpret_cast<const char*>(&channel) + sizeof(Channel), sizeof fields);
  EXPECT_EQ(fields.context, 1);
  EXPECT_EQ(fields.readersLength, std::strlen("ACS SAM 00 00") + 2);
  EXPECT_EQ(fields.card, 101);
  EXPECT_EQ(fields.ioRequest->dwProtocol, DWORD{SCARD_PROTOCOL_T1});
  EXPECT_EQ(fields.connected, 1);
}

// ---- the APDU exchange

class SamApdu : public mvx2test::ConnectedChannel {
 protected:
  long exchange(Bytes data, bool sendLe) {
    return channel.APDUTransaction(data.data(), data.size(), response.data(), length, 0x44, 0x33, 0x22, 0x55,
                                   sendLe, 0x11);
  }
  Bytes reply() const { return {response.begin(), response.begin() + static_cast<long>(length)}; }

  Bytes response = Bytes(69, 0xEE);
  unsigned long length = 0xDEAD;
};

TEST_F(SamApdu, IsSentInsideAReaderTransactionAndAnswered) {
  pcsc.reply({0x01, 0x02, 0x90, 0xAF});
  EXPECT_EQ(exchange({0xA0}, true), SCARD_S_SUCCESS);
  EXPECT_EQ(pcsc.calls, (Calls{"SCardBeginTransaction(card 101)",
                               "SCardTransmit(card 101, pci {2, 8} {2, 8}, 11 22 33 44 01 A0 55, room 69)",
                               "SCardEndTransaction(card 101, disposition 0)"}));
  EXPECT_EQ(hex(reply()), "01 02 90 AF");
}

TEST_F(SamApdu, LeavesTheRoomBehindTheReplyAlone) {
  pcsc.reply({0x90, 0x00});
  exchange({}, true);
  EXPECT_EQ(Bytes(response.begin() + 2, response.end()), Bytes(67, 0xEE));
}

TEST_F(SamApdu, SendsTheHeaderAloneWithoutDataAndLe) {
  exchange({}, false);
  EXPECT_EQ(sent(), Calls{"11 22 33 44"});
}

TEST_F(SamApdu, SendsLeBehindTheHeaderWithoutData) {
  exchange({}, true);
  EXPECT_EQ(sent(), Calls{"11 22 33 44 55"});
}

TEST_F(SamApdu, SendsTheLengthAndTheDataWithoutLe) {
  exchange({0xA0, 0xA1, 0xA2}, false);
  EXPECT_EQ(sent(), Calls{"11 22 33 44 03 A0 A1 A2"});
}

TEST_F(SamApdu, SendsTwentyBytesWithLeAsTwentySix) {
  exchange(Bytes(20, 0xA0), true);
  ASSERT_EQ(pcsc.apdus.at(0).size(), 26U);
  EXPECT_EQ(pcsc.apdus[0][4], 0x14);
  EXPECT_EQ(pcsc.apdus[0].back(), 0x55);
}

TEST_F(SamApdu, SendsAsMuchAsFits) {
  EXPECT_EQ(exchange(Bytes(63, 0xA0), true), SCARD_S_SUCCESS);
  EXPECT_EQ(exchange(Bytes(64, 0xA0), false), SCARD_S_SUCCESS);
  EXPECT_EQ(pcsc.apdus.at(0).size(), 69U);
  EXPECT_EQ(pcsc.apdus.at(1).size(), 69U);
}

TEST_F(SamApdu, RefusesMoreDataBeforeAnyCall) {
  EXPECT_EQ(exchange(Bytes(64, 0xA0), true), SCARD_E_INVALID_PARAMETER);
  EXPECT_EQ(exchange(Bytes(65, 0xA0), false), SCARD_E_INVALID_PARAMETER);
  EXPECT_EQ(exchange(Bytes(256, 0xA0), false), SCARD_E_INVALID_PARAMETER);
  unsigned char byte = 0;
  for (const bool sendLe : {false, true})
    EXPECT_EQ(channel.APDUTransaction(&byte, ULONG_MAX, response.data(), length, 0, 0, 0, 0, sendLe, 0),
              SCARD_E_INVALID_PARAMETER);
  EXPECT_EQ(pcsc.calls, Calls{});
  EXPECT_EQ(length, 0xDEADU);
  EXPECT_EQ(response, Bytes(69, 0xEE));
}

TEST_F(SamApdu, RefusesANullArrayWithALength) {
  EXPECT_EQ(channel.APDUTransaction(nullptr, 1, response.data(), length, 0, 0, 0, 0, false, 0),
            SCARD_E_INVALID_PARAMETER);
  EXPECT_EQ(pcsc.calls, Calls{});
}

TEST_F(SamApdu, SendsNothingWhenTheTransactionCannotBeBegun) {
  pcsc.fail("SCardBeginTransaction", a_failure);
  EXPECT_EQ(exchange({0xA0}, true), a_failure);
  EXPECT_EQ(pcsc.calls, Calls{"SCardBeginTransaction(card 101)"});
  EXPECT_EQ(length, 0xDEADU);
  EXPECT_EQ(response, Bytes(69, 0xEE));
}

TEST_F(SamApdu, EndsTheTransactionAndHandsOverWhatThereIsWhenTheTransmitFails) {
  pcsc.reply({{0x01, 0x02}, a_failure});
  EXPECT_EQ(exchange({}, true), a_failure);
  EXPECT_EQ(pcsc.callNames(), (Calls{"SCardBeginTransaction", "SCardTransmit", "SCardEndTransaction"}));
  EXPECT_EQ(hex(reply()), "01 02");
}

TEST_F(SamApdu, HandsOverZerosWhenAFailedTransmitLeavesTheLength) {
  pcsc.fail("SCardTransmit", a_failure);
  EXPECT_EQ(exchange({}, true), a_failure);
  EXPECT_EQ(reply(), Bytes(69, 0x00));
}

TEST_F(SamApdu, ReturnsWhyTheTransactionCannotBeEnded) {
  pcsc.reply({0x90, 0x00});
  pcsc.fail("SCardEndTransaction", a_failure);
  EXPECT_EQ(exchange({}, true), a_failure);
  EXPECT_EQ(hex(reply()), "90 00");
}

TEST_F(SamApdu, PrefersTheStatusOfTheTransmit) {
  pcsc.fail("SCardTransmit", another_failure);
  pcsc.fail("SCardEndTransaction", a_failure);
  EXPECT_EQ(exchange({}, true), another_failure);
}

TEST_F(SamApdu, TakesALongerReportedReplyAs69Bytes) {
  for (const LONG status : {SCARD_S_SUCCESS, static_cast<LONG>(SCARD_E_INSUFFICIENT_BUFFER)}) {
    mvx2test::TransmitReply longer{Bytes(69, 0x77), status};
    longer.length = 300;
    pcsc.reply(longer);
    EXPECT_EQ(exchange({}, true), status);
    EXPECT_EQ(reply(), Bytes(69, 0x77));
  }
}

}  // namespace
