#include <mvx2/MVX2Exception.h>
#include <mvx2/USBChannel.h>

#include "support/scripted_pcsc.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using mvx2test::Bytes;
using mvx2test::ScriptedPcsc;
using Calls = std::vector<std::string>;

constexpr LONG a_failure = static_cast<LONG>(0x8010001DUL);

Calls operator+(Calls calls, const Calls& more) {
  calls.insert(calls.end(), more.begin(), more.end());
  return calls;
}

class UsbChannel : public testing::Test {
 protected:
  void SetUp() override { pcsc.reset(); }

  // What the constructor's exception says; empty if it throws none.
  static std::string constructionError(int readerSelect = -1) {
    try {
      const USBChannel channel(readerSelect);
    } catch (const MVX2Exception& e) {
      return e.what();
    }
    return "";
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

  void expectNothingAcquired() const {
    EXPECT_EQ(pcsc.openContexts, 0);
    EXPECT_EQ(pcsc.openCards, 0);
    EXPECT_EQ(pcsc.openLists, 0);
  }

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
};

// ---- construction and destruction

const Calls establish = {"SCardEstablishContext(scope 2)"};
const Calls list = {"SCardListReaders(context 1, auto-allocated)"};
const Calls connect = {"SCardConnect(context 1, KRV MVX3 Terminal 00 00, share 2, protocols 3)"};
const Calls freeList = {"SCardFreeMemory(context 1)"};
const Calls disconnect = {"SCardDisconnect(card 101, disposition 0)"};
const Calls release = {"SCardReleaseContext(context 1)"};

TEST_F(UsbChannel, ConnectsAndDisconnectsInThePrescribedOrder) {
  { const USBChannel channel(-1); }
  EXPECT_EQ(pcsc.calls, establish + list + connect + freeList + disconnect + release);
  expectNothingAcquired();
}

struct ConstructionFailure {
  const char* failing;
  LONG status;
  std::string text;
  Calls calls;
};

void PrintTo(const ConstructionFailure& failure, std::ostream* out) { *out << failure.text; }

class UsbChannelConstructionFailure : public UsbChannel,
                                      public testing::WithParamInterface<ConstructionFailure> {};

TEST_P(UsbChannelConstructionFailure, IsReportedAndReleasesWhatWasAcquired) {
  pcsc.fail(GetParam().failing, GetParam().status);
  EXPECT_EQ(constructionError(), GetParam().text);
  EXPECT_EQ(pcsc.calls, GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(
    AtEachCall, UsbChannelConstructionFailure,
    testing::Values(ConstructionFailure{"SCardEstablishContext", a_failure,
                                        "SCardEstablishContext (0x8010001d) [USBChannel:USBChannel:26]",
                                        establish},
                    ConstructionFailure{"SCardListReaders", a_failure,
                                        "SCardListReaders (0x8010001d) [USBChannel:USBChannel:30]",
                                        establish + list + release},
                    ConstructionFailure{"SCardConnect", a_failure,
                                        "SCardConnect (0x8010001d) [USBChannel:USBChannel:97]",
                                        establish + list + connect + freeList + release},
                    ConstructionFailure{"SCardFreeMemory", a_failure,
                                        "SCardFreeMemory (0x8010001d) [USBChannel:USBChannel:112]",
                                        establish + list + connect + freeList + disconnect + release}),
    [](const auto& test) { return std::string(test.param.failing); });

TEST_F(UsbChannel, ReportsANullListWithCodeZero) {
  pcsc.listIsNull = true;
  EXPECT_EQ(constructionError(), "SCardListReaders (0x0) [USBChannel:USBChannel:36]");
  EXPECT_EQ(pcsc.calls, establish + list + release);
}

TEST_F(UsbChannel, ReportsThatNoReaderWasAccepted) {
  pcsc.readers = {"Some other reader"};
  EXPECT_EQ(constructionError(), "dwAP (0x0) [USBChannel:USBChannel:114]");
  EXPECT_EQ(pcsc.calls, establish + list + freeList + release);
  expectNothingAcquired();
}

TEST_F(UsbChannel, ReportsAFailedFreeBeforeAMissingReader) {
  pcsc.readers = {"Some other reader"};
  pcsc.fail("SCardFreeMemory", a_failure);
  EXPECT_EQ(constructionError(), "SCardFreeMemory (0x8010001d) [USBChannel:USBChannel:112]");
  EXPECT_EQ(pcsc.calls, establish + list + freeList + release);
}

TEST_F(UsbChannel, LeavesAConnectionWithoutAProtocol) {
  pcsc.activeProtocol = SCARD_PROTOCOL_UNDEFINED;
  EXPECT_EQ(constructionError(), "dwAP (0x0) [USBChannel:USBChannel:114]");
  EXPECT_EQ(pcsc.calls, establish + list + connect + freeList + disconnect + release);
}

TEST_F(UsbChannel, HasNoCardWhenTheReaderListIsEmpty) {
  pcsc.readers = {};
  {
    USBChannel channel(-1);
    EXPECT_EQ(pcsc.calls, establish + list);
    pcsc.calls.clear();
    EXPECT_EQ(channel.mvx2NoFormattedTransaction("value\r"), "");
    EXPECT_EQ(pcsc.calls, Calls{"SCardBeginTransaction(card 0)"});
    pcsc.calls.clear();
  }
  EXPECT_EQ(pcsc.calls, (Calls{"SCardDisconnect(card 0, disposition 0)", "SCardReleaseContext(context 1)"}));
}

TEST_F(UsbChannel, HasAnEmptyName) { EXPECT_STREQ(USBChannel(-1).name(), ""); }

TEST_F(UsbChannel, LeaksNothingInTenThousandFailedConstructions) {
  const char* const failing[] = {"SCardListReaders", "SCardConnect"};
  for (int i = 0; i < 10000; ++i) {
    pcsc.fail(failing[i % 2], a_failure);
    ASSERT_NE(constructionError(), "");
    pcsc.calls.clear();
  }
  expectNothingAcquired();
}

// ---- which reader

TEST_F(UsbChannel, TakesTheLastAcceptedReader) {
  pcsc.readers = {"KRV A", "KRV B", "Other C"};
  { const USBChannel channel(0); }
  EXPECT_EQ(connectedReader(), "KRV B");
}

struct Selection {
  int readerSelect;
  std::vector<std::string> readers;
  std::string connected;
};

void PrintTo(const Selection& selection, std::ostream* out) {
  *out << "readerSelect " << selection.readerSelect << " among " << testing::PrintToString(selection.readers);
}

class UsbChannelSelection : public UsbChannel, public testing::WithParamInterface<Selection> {};

TEST_P(UsbChannelSelection, ConnectsTheReaderThatIsAskedFor) {
  pcsc.readers = GetParam().readers;
  const std::string error = constructionError(GetParam().readerSelect);
  EXPECT_EQ(connectedReader(), GetParam().connected);
  EXPECT_EQ(error, GetParam().connected.empty() ? "dwAP (0x0) [USBChannel:USBChannel:114]" : "");
}

const std::vector<std::string> both = {"Reader KRV 0", "velmorin MVX3 1"};

INSTANTIATE_TEST_SUITE_P(
    Readers, UsbChannelSelection,
    testing::Values(Selection{0, both, "Reader KRV 0"}, Selection{1, both, "velmorin MVX3 1"},
                    Selection{-1, both, "velmorin MVX3 1"}, Selection{2, both, ""}, Selection{-2, both, ""},
                    Selection{-1, {"krv"}, "krv"}, Selection{-1, {"VelMorin"}, "VelMorin"},
                    Selection{1, {"Krv mvx3"}, "Krv mvx3"}, Selection{0, {"Krv mvx3"}, ""},
                    Selection{1, {"KRV MVX2"}, ""}, Selection{1, {"MVX3"}, ""},
                    Selection{-1, {"K R V", "MVX3"}, ""}, Selection{0, {"KRV one", "MVX3 two"}, "KRV one"},
                    Selection{-1, {"xkrvx", "\xE9\xFF"}, "xkrvx"}));

// ---- protocol information

struct Protocol {
  DWORD active;
  std::string pci;
};

std::ostream& operator<<(std::ostream& stream, const Protocol& protocol) { return stream << protocol.pci; }

class UsbChannelProtocol : public UsbChannel, public testing::WithParamInterface<Protocol> {};

TEST_P(UsbChannelProtocol, GoesIntoTheProtocolInformation) {
  pcsc.activeProtocol = GetParam().active;
  USBChannel channel(-1);
  channel.mvx2NoFormattedTransaction("");
  const std::string sameTwice = "SCardTransmit(card 101, pci " + GetParam().pci + " " + GetParam().pci;
  EXPECT_EQ(pcsc.calls[5].rfind(sameTwice, 0), 0U) << pcsc.calls[5];
}

INSTANTIATE_TEST_SUITE_P(Protocols, UsbChannelProtocol,
                         testing::Values(Protocol{1, "{1, 8}"}, Protocol{2, "{2, 8}"}, Protocol{4, "{4, 0}"}),
                         [](const auto& test) { return "Active" + std::to_string(test.param.active); });

// ---- exchanges

const Calls begin = {"SCardBeginTransaction(card 101)"};
const Calls end = {"SCardEndTransaction(card 101, disposition 0)"};

Calls transmit(const std::string& apdu) {
  return {"SCardTransmit(card 101, pci {2, 8} {2, 8}, " + apdu + ", room 69)"};
}

const Calls fetch3 = transmit("FF C0 00 00 03");

// One way an exchange can go: what the reader does, which calls are made, what comes back.
struct Exchange {
  std::string name;
  std::vector<std::pair<const char*, int>> failing;  // which coming call of a function fails
  std::vector<Bytes> replies;
  Calls after;         // the calls after the first transmit's (or after the begin, if it fails)
  std::string answer;  // of a success
  std::optional<std::string> thrown;  // raw exchange: what() of an MVX2Exception, or "" for a plain exception
};

void PrintTo(const Exchange& exchange, std::ostream* out) { *out << exchange.name; }

const Bytes threeWait = {0x61, 0x03};
const Bytes three = {'a', '\0', 'b', 0x90, 0x00};
const std::string threeAnswered("a\0b\x90\0", 5);

class UsbChannelExchange : public UsbChannel, public testing::WithParamInterface<Exchange> {
 protected:
  void SetUp() override {
    UsbChannel::SetUp();
    channel.emplace(-1);
    pcsc.calls.clear();
    for (const auto& [function, nth] : GetParam().failing) pcsc.fail(function, a_failure, nth);
    for (const Bytes& reply : GetParam().replies) pcsc.reply(reply);
  }

  bool beginFails() const { return GetParam().name == "BeginFails"; }

  std::optional<USBChannel> channel;
};

class UsbChannelTextExchange : public UsbChannelExchange {};

TEST_P(UsbChannelTextExchange, MakesTheseCallsAndNeverThrows) {
  EXPECT_EQ(channel->mvx2NoFormattedTransaction("ab\r"), GetParam().answer);
  EXPECT_EQ(pcsc.calls,
            begin + (beginFails() ? Calls{} : transmit("FF 00 00 00 03 61 62 0D")) + GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, UsbChannelTextExchange,
    testing::Values(Exchange{"Succeeds", {}, {threeWait, three}, fetch3 + end, threeAnswered, {}},
                    Exchange{"NothingWaits", {}, {{0x61, 0x00}}, end, "", {}},
                    Exchange{"BeginFails", {{"SCardBeginTransaction", 1}}, {}, {}, "", {}},
                    Exchange{"TransmitFails", {{"SCardTransmit", 1}}, {}, {}, "", {}},
                    Exchange{"ReplyIsEmpty", {}, {{}}, {}, "", {}},
                    Exchange{"ReplyHasOneByte", {}, {{0x61}}, {}, "", {}},
                    Exchange{"ReplyIsOfAnotherKind", {}, {{0x90, 0x00}}, {}, "", {}},
                    Exchange{"FetchFails", {{"SCardTransmit", 2}}, {threeWait}, fetch3, "", {}},
                    Exchange{"FetchIsEmpty", {}, {threeWait, {}}, fetch3 + end, "", {}},
                    Exchange{
                        "EndFails", {{"SCardEndTransaction", 1}}, {threeWait, three}, fetch3 + end, "", {}}),
    [](const auto& test) { return test.param.name; });

TEST_P(UsbChannelTextExchange, LeavesTheTransactionOpenOnlyWhenItFailsInside) {
  channel->mvx2NoFormattedTransaction("ab\r");
  const bool ended = !GetParam().after.empty() && GetParam().after.back() == end.back();
  const bool endFailed = GetParam().name == "EndFails";
  EXPECT_EQ(pcsc.openTransactions, beginFails() || (ended && !endFailed) ? 0 : 1);
}

class UsbChannelRawExchange : public UsbChannelExchange {};

TEST_P(UsbChannelRawExchange, MakesTheseCallsAndThrowsSo) {
  std::optional<std::string> thrown;
  try {
    EXPECT_EQ(channel->mvx2APDUTransaction("ab\r", 3), GetParam().answer);
  } catch (const MVX2Exception& e) {
    thrown = e.what();
  } catch (const std::exception& e) {
    EXPECT_EQ(typeid(e), typeid(std::exception));
    thrown = "";
  }
  EXPECT_EQ(thrown, GetParam().thrown);
  EXPECT_EQ(pcsc.calls,
            begin + (beginFails() ? Calls{} : transmit("FF 00 01 00 03 61 62 0D")) + GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, UsbChannelRawExchange,
    testing::Values(Exchange{"Succeeds", {}, {threeWait, three}, fetch3 + end, threeAnswered, {}},
                    Exchange{"NothingWaits", {}, {{0x61, 0x00}}, end, "", {}},
                    Exchange{
                        "BeginFails",
                        {{"SCardBeginTransaction", 1}},
                        {},
                        {},
                        "",
                        "SCardBeginTransaction (0x8010001d) [mvx2NoFormattedTransaction:USBChannel:210]"},
                    Exchange{"TransmitFails", {{"SCardTransmit", 1}}, {}, end, "", ""},
                    Exchange{"ReplyIsEmpty", {}, {{}}, end, "", ""},
                    Exchange{"ReplyHasOneByte", {}, {{0x61}}, end, "", ""},
                    Exchange{"ReplyIsOfAnotherKind", {}, {{0x90, 0x00}}, end, "", ""},
                    Exchange{"FetchFails", {{"SCardTransmit", 2}}, {threeWait}, fetch3 + end, "", ""},
                    Exchange{"EndFails",
                             {{"SCardEndTransaction", 1}},
                             {threeWait, three},
                             fetch3 + end,
                             "",
                             "SCardEndTransaction (0x8010001d) [mvx2APDUTransaction:USBChannel:307]"},
                    Exchange{"TransmitAndEndFail",
                             {{"SCardTransmit", 1}, {"SCardEndTransaction", 1}},
                             {},
                             end,
                             "",
                             "SCardEndTransaction (0x8010001d) [mvx2APDUTransaction:USBChannel:307]"}),
    [](const auto& test) { return test.param.name; });

class UsbChannelLimits : public UsbChannel {
 protected:
  void SetUp() override {
    UsbChannel::SetUp();
    channel.emplace(-1);
    pcsc.calls.clear();
  }

  void expectRefused(const char* data, int length) {
    try {
      channel->mvx2APDUTransaction(data, length);
      ADD_FAILURE() << "not refused";
    } catch (const std::exception& e) {
      EXPECT_EQ(typeid(e), typeid(std::exception));
    }
    EXPECT_EQ(pcsc.calls, Calls{});
  }

  std::optional<USBChannel> channel;
};

TEST_F(UsbChannelLimits, SendsATextOf64Bytes) {
  pcsc.answer("answer");
  EXPECT_EQ(channel->mvx2NoFormattedTransaction(std::string(64, 'x')), std::string("answer\x90\0", 8));
  EXPECT_EQ(pcsc.apdus[0].size(), 69U);
  EXPECT_EQ(pcsc.apdus[0][4], 64);
}

TEST_F(UsbChannelLimits, RefusesATextOf65BytesBeforeAnyCall) {
  EXPECT_EQ(channel->mvx2NoFormattedTransaction(std::string(65, 'x')), "");
  EXPECT_EQ(pcsc.calls, Calls{});
}

TEST_F(UsbChannelLimits, SendsABufferOf64Bytes) {
  const std::string data(64, 'x');
  channel->mvx2APDUTransaction(data.data(), 64);
  EXPECT_EQ(pcsc.requests(), std::vector<std::string>{data});
}

TEST_F(UsbChannelLimits, RefusesABufferOf65Bytes) { expectRefused(std::string(65, 'x').data(), 65); }

TEST_F(UsbChannelLimits, RefusesANegativeLength) { expectRefused("x", -1); }

TEST_F(UsbChannelLimits, RefusesANullBufferWithALength) { expectRefused(nullptr, 1); }

TEST_F(UsbChannelLimits, SendsANullBufferWithoutALength) {
  channel->mvx2APDUTransaction(nullptr, 0);
  EXPECT_EQ(mvx2test::hex(pcsc.apdus.at(0)), "FF 00 01 00 00");
}

TEST_F(UsbChannelLimits, TakesALongerReportedReplyAs69Bytes) {
  pcsc.reply({0x61, 0xFF});
  mvx2test::TransmitReply longer{Bytes(69, 'x')};
  longer.length = 300;
  pcsc.reply(longer);
  EXPECT_EQ(channel->mvx2NoFormattedTransaction("a\r"), std::string(69, 'x'));
}

TEST_F(UsbChannelLimits, LetsTheStatusDecideOverALongerReportedReply) {
  pcsc.reply({0x61, 0xFF});
  mvx2test::TransmitReply longer{Bytes(69, 'x'), static_cast<LONG>(SCARD_E_INSUFFICIENT_BUFFER)};
  longer.length = 300;
  pcsc.reply(longer);
  EXPECT_EQ(channel->mvx2NoFormattedTransaction("a\r"), "");
}

TEST_F(UsbChannelLimits, FetchesAsManyBytesAsWait) {
  pcsc.reply({0x61, 0xFF});
  pcsc.reply({0x90, 0x00});
  channel->mvx2NoFormattedTransaction("a\r");
  EXPECT_EQ(mvx2test::hex(pcsc.apdus.at(1)), "FF C0 00 00 FF");
}

}  // namespace
