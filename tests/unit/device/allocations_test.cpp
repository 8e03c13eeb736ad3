// A program of its own, with PC/SC functions that allocate nothing: it counts the heap allocations of
// commands.
#include <mvx2/MVX2Interfaces.h>

#include "support/log_capture.h"

#include <gtest/gtest.h>
#include <winscard.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace {

int allocations = 0;
int failing_allocation = 0;  // the count at which one fails; 0: never

std::string_view reader_reply;  // with the status bytes

// What PC/SC has handed out and not got back.
int open_contexts = 0;
int open_lists = 0;
int open_cards = 0;
int open_transactions = 0;

}  // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): an operator new has nothing else to take memory from.
void* operator new(std::size_t size) {
  if (++allocations == failing_allocation) throw std::bad_alloc();
  void* const memory = std::malloc(std::max<std::size_t>(size, 1));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
// NOLINTEND(cppcoreguidelines-no-malloc)

extern "C" {

LONG SCardEstablishContext(DWORD /*scope*/, LPCVOID /*reserved1*/, LPCVOID /*reserved2*/,
                           LPSCARDCONTEXT context) {
  *context = 1;
  ++open_contexts;
  return SCARD_S_SUCCESS;
}
LONG SCardReleaseContext(SCARDCONTEXT /*context*/) {
  --open_contexts;
  return SCARD_S_SUCCESS;
}
LONG SCardListReaders(SCARDCONTEXT /*context*/, LPCSTR /*groups*/, LPSTR readers, LPDWORD /*length*/) {
  static char list[] = "KRV\0";
  char* const names = list;
  std::memcpy(readers, &names, sizeof names);
  ++open_lists;
  return SCARD_S_SUCCESS;
}
LONG SCardFreeMemory(SCARDCONTEXT /*context*/, LPCVOID /*memory*/) {
  --open_lists;
  return SCARD_S_SUCCESS;
}
LONG SCardConnect(SCARDCONTEXT /*context*/, LPCSTR /*reader*/, DWORD /*share*/, DWORD /*protocols*/,
                  LPSCARDHANDLE card, LPDWORD activeProtocol) {
  *card = 1;
  *activeProtocol = SCARD_PROTOCOL_T1;
  ++open_cards;
  return SCARD_S_SUCCESS;
}
LONG SCardDisconnect(SCARDHANDLE /*card*/, DWORD /*disposition*/) {
  --open_cards;
  return SCARD_S_SUCCESS;
}
LONG SCardBeginTransaction(SCARDHANDLE /*card*/) {
  ++open_transactions;
  return SCARD_S_SUCCESS;
}
LONG SCardEndTransaction(SCARDHANDLE /*card*/, DWORD /*disposition*/) {
  --open_transactions;
  return SCARD_S_SUCCESS;
}
LONG SCardTransmit(SCARDHANDLE /*card*/, const SCARD_IO_REQUEST* /*sendPci*/, LPCBYTE command,
                   DWORD /*commandLength*/, SCARD_IO_REQUEST* /*receivePci*/, LPBYTE reply,
                   LPDWORD replyLength) {
  const unsigned char waits[] = {0x61, static_cast<unsigned char>(reader_reply.size())};
  const bool fetches = command[1] == 0xC0;
  *replyLength = fetches ? reader_reply.size() : sizeof waits;
  if (fetches)
    std::copy(reader_reply.begin(), reader_reply.end(), reply);
  else
    std::copy(std::begin(waits), std::end(waits), reply);
  return SCARD_S_SUCCESS;
}
unsigned int sleep(unsigned int /*seconds*/) { return 0; }

}  // extern "C"

namespace {

using velmorin::MVX2Interfaces;
using Call = std::function<void(MVX2Interfaces&)>;

// A std::string keeps up to 15 characters without the heap. The short reply needs no allocation; of the long
// one the raw bytes need one and the answer cut out of them another.
constexpr std::string_view short_reply = "v\r\n1\r\n>\x90";
constexpr std::string_view long_reply = "v\r\n0x0000000000000012\r\n>\x90";

class Allocations : public testing::Test {
 protected:
  void SetUp() override {
    const int before = allocations;
    ::operator delete(::operator new(1));
    if (allocations == before) GTEST_SKIP() << "another allocator is in place, as under valgrind";
    reader_reply = short_reply;
    ASSERT_TRUE(facade->connect(1, velmorin::CONNECT_DEFAULT));
  }
  void TearDown() override {
    failing_allocation = 0;
    facade->disconnect();
  }

  // Lets the nth coming allocation fail while the call runs.
  void failAllocation(int nth, const Call& call) {
    allocations = 0;
    failing_allocation = nth;
    call(*facade);
    failing_allocation = 0;
  }

  int countOf(const Call& call, std::string_view reply) {
    reader_reply = reply;
    allocations = 0;
    call(*facade);
    return allocations;
  }

  MVX2Interfaces* facade = MVX2Interfaces::getInstance(0);
};

struct Shape {
  const char* name;
  Call call;
  int withShortReply;
  int withLongReply;
};

// One of each shape. Only strings that leave their 15 characters count.
const std::vector<Shape>& shapes() {
  static const std::vector<Shape> shapes = {
      // The word is short: raw reply and answer.
      {"typed getter", [](MVX2Interfaces& f) { f.getDepartment(); }, 0, 2},
      {"flag", [](MVX2Interfaces& f) { f.getAddVal(); }, 0, 2},
      {"hexadecimal getter", [](MVX2Interfaces& f) { f.getCardId(); }, 0, 2},
      {"card action", [](MVX2Interfaces& f) { f.persocreate(); }, 0, 2},
      {"list", [](MVX2Interfaces& f) { f.getListPurses(); }, 0, 2},
      {"order", [](MVX2Interfaces& f) { f.reboot(); }, 0, 2},
      // The answer is copied into a buffer of 128 characters.
      {"text getter", [](MVX2Interfaces& f) { f.getDepartment_CPtr(); }, 0, 2},
      // "freq 1\r" is short.
      {"setter", [](MVX2Interfaces& f) { f.setFreq(1); }, 0, 2},
      // The request of 19 characters and its formatted copy.
      {"setter of a long number", [](MVX2Interfaces& f) { f.setMaxVal(3000000000U); }, 2, 4},
      {"sector setter", [](MVX2Interfaces& f) { f.setSectors1(65535); }, 0, 2},
      {"text setter", [](MVX2Interfaces& f) { f.setValue_CPtr("1"); }, 0, 2},
      // The text as a string, the request, its formatted copy.
      {"text setter of a long text", [](MVX2Interfaces& f) { f.setUKeyA_CPtr("A0A1A2A3A4A5B0B1"); }, 3, 5},
      {"line of the caller's", [](MVX2Interfaces& f) { f.transaction("value"); }, 0, 2},
      // The raw reply is the result: nothing is cut out of it.
      {"raw text", [](MVX2Interfaces& f) { f.noFormatedTransaction("value"); }, 0, 1},
      {"raw buffer", [](MVX2Interfaces& f) { f.sendAPDU("value", 5); }, 0, 1},
      {"prompt test", [](MVX2Interfaces& f) { f.isOnline(); }, 0, 1},
  };
  return shapes;
}

TEST_F(Allocations, AreNoneWhileEveryStringIsShort) {
  for (const Shape& shape : shapes())
    EXPECT_EQ(countOf(shape.call, short_reply), shape.withShortReply) << shape.name;
}

TEST_F(Allocations, AreOneForEachLongString) {
  for (const Shape& shape : shapes())
    EXPECT_EQ(countOf(shape.call, long_reply), shape.withLongReply) << shape.name;
}

TEST_F(Allocations, AreNoneWithoutAChannel) {
  for (const Shape& shape : shapes()) {
    shape.call(*facade);
    facade->disconnect();
    EXPECT_EQ(countOf(shape.call, long_reply), 0) << shape.name;
    facade->connect(1, velmorin::CONNECT_DEFAULT);
  }
}

TEST_F(Allocations, ThatFailInACommandAreAFailureLikeAnyOther) {
  reader_reply = long_reply;
  const mvx2test::LogCapture log;
  // The second is the answer: the channel absorbs what fails while it exchanges.
  failAllocation(2, [](MVX2Interfaces& f) { EXPECT_EQ(f.getCredit(), -1); });
  EXPECT_EQ(log.lines().at(0), "credit : std::bad_alloc");
}

TEST_F(Allocations, ThatFailInATextExchangeMakeItsReplyEmpty) {
  reader_reply = long_reply;
  const mvx2test::LogCapture log;
  failAllocation(1, [](MVX2Interfaces& f) { EXPECT_EQ(f.getCredit(), 0); });
  EXPECT_EQ(log.text(), "");
}

TEST_F(Allocations, ThatFailInARawExchangeLeaveNoTransactionOpen) {
  reader_reply = long_reply;
  const int before = open_transactions;
  const mvx2test::LogCapture log;
  failAllocation(1, [](MVX2Interfaces& f) { EXPECT_STREQ(f.sendAPDU("value", 5), "No connected"); });
  EXPECT_EQ(open_transactions, before);
  EXPECT_EQ(log.lines().at(0), "value : std::exception");
}

TEST_F(Allocations, ThatFailInAConnectLeaveNothingAcquired) {
  facade->disconnect();
  reader_reply = long_reply;
  const mvx2test::LogCapture log;
  int failures = 0;
  for (int nth = 1; nth <= 8; ++nth) {
    bool connected = true;
    failAllocation(nth, [&](MVX2Interfaces& f) { connected = f.connect(1, velmorin::CONNECT_DEFAULT); });
    EXPECT_EQ(facade->channelIsReady(), connected ? 1 : 0);
    if (!connected) {
      ++failures;
      EXPECT_EQ(log.lines().back(), "USB: std::bad_alloc") << nth;
    }
    facade->disconnect();
    EXPECT_EQ(open_contexts, 0) << nth;
    EXPECT_EQ(open_lists, 0) << nth;
    EXPECT_EQ(open_cards, 0) << nth;
  }
  EXPECT_GE(failures, 3) << "channel, protocol information, answer";
}

}  // namespace
