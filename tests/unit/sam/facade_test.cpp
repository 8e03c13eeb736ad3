#include <mvx2/SAMInterfaces.h>

#include "connected_channel.h"
#include "fixed_clock.h"
#include "fixed_random.h"
#include "unlock_vector.h"

#include <climits>
#include <cstring>
#include <iostream>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <typeinfo>
#include <utility>

namespace {

using mvx2test::a_failure;
using mvx2test::Bytes;
using mvx2test::Calls;
using mvx2test::FixedClock;
using mvx2test::FixedRandom;
using mvx2test::ScriptedPcsc;
using mvx2test::unhex;
using mvx2test::UnlockVector;

const std::string the_time = "Tue Nov 14 22:13:20 2023\n";
const std::string connected = "SAM connexion at " + the_time + " (status = 1)(error = 0)\n";
const std::string not_connected = "SAM connexion at " + the_time + " (status = 0)(error = 8010001d)\n";
const std::string disconnected = "SAM disconnexion at " + the_time + "\n";

// Keeps what is written and counts the flushes.
class FlushCounter : public std::stringbuf {
 public:
  int flushes = 0;

 protected:
  int sync() override {
    ++flushes;
    return 0;
  }
};

// Reads what goes to standard output, and leaves the stream as it was found.
class OutputCapture {
 public:
  OutputCapture() : m_before(nullptr), m_buffer(std::cout.rdbuf(&m_text)) { m_before.copyfmt(std::cout); }
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture(OutputCapture&&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;
  OutputCapture& operator=(OutputCapture&&) = delete;
  ~OutputCapture() {
    std::cout.clear();
    std::cout.rdbuf(m_buffer);
    std::cout.copyfmt(m_before);
  }
  std::string text() const { return m_text.str(); }
  int flushes() const { return m_text.flushes; }

 private:
  FlushCounter m_text;
  std::ios m_before;
  std::streambuf* m_buffer;
};

class SamFacade : public testing::Test {
 protected:
  void SetUp() override {
    pcsc.reset();
    pcsc.readers = {"ACS SAM 00 00"};
    FixedClock::instance().reset();
    FixedRandom::instance().reset();
    facade = SAMInterfaces::getInstance();
  }
  void TearDown() override { SAMInterfaces::releaseInstance(); }

  void failTries(int tries) {
    for (int i = 1; i <= tries; ++i) pcsc.fail("SCardEstablishContext", a_failure, i);
  }

  int countCalls(const std::string& name) const {
    int count = 0;
    for (const std::string& call : pcsc.callNames()) count += call == name ? 1 : 0;
    return count;
  }

  void scriptUnlock() {
    FixedRandom::instance().give(UnlockVector::instance().rnd1);
    FixedRandom::instance().give(UnlockVector::instance().rndA);
    pcsc.reply(UnlockVector::instance().step1Reply());
    pcsc.reply(UnlockVector::instance().step2Reply());
    pcsc.reply(UnlockVector::step3Reply());
  }

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
  SAMInterfaces* facade = nullptr;
  OutputCapture output;
};

// ---- the one instance

TEST_F(SamFacade, IsTheSameEveryTime) { EXPECT_EQ(SAMInterfaces::getInstance(), facade); }

TEST_F(SamFacade, IsMadeAnewAfterARelease) {
  facade->enableExternalException(true);
  SAMInterfaces::releaseInstance();
  EXPECT_FALSE(SAMInterfaces::getInstance()->externalExceptionIsEnable());
}

TEST_F(SamFacade, IsReleasedTwiceWithoutHarm) {
  SAMInterfaces::releaseInstance();
  SAMInterfaces::releaseInstance();
  EXPECT_EQ(output.text(), "");
}

TEST_F(SamFacade, DisconnectsSilentlyWhenItIsReleased) {
  facade->SAM_connect(1);
  const std::string before = output.text();
  SAMInterfaces::releaseInstance();
  EXPECT_EQ(pcsc.openCards, 0);
  EXPECT_EQ(pcsc.openContexts, 0);
  EXPECT_EQ(output.text(), before);
}

// ---- connect

TEST_F(SamFacade, ConnectsAndSleepsASecond) {
  EXPECT_EQ(facade->SAM_connect(1), 1);
  EXPECT_EQ(pcsc.calls,
            (Calls{"SCardEstablishContext(scope 2)", "SCardListReaders(context 1, auto-allocated)",
                   "SCardConnect(context 1, ACS SAM 00 00, share 2, protocols 3)",
                   "SCardFreeMemory(context 1)", "sleep(1)"}));
  EXPECT_TRUE(facade->SAM_isConnected());
  EXPECT_EQ(output.text(), connected);
}

TEST_F(SamFacade, ConnectsAsOftenAsAskedThoughTheFirstAttemptSucceeds) {
  EXPECT_EQ(facade->SAM_connect(3), 1);
  EXPECT_EQ(countCalls("SCardConnect"), 3);
  EXPECT_EQ(countCalls("sleep"), 3);
  EXPECT_EQ(output.text(), connected + connected + connected);
}

TEST_F(SamFacade, KeepsTheLastOfItsChannelsAlone) {
  facade->SAM_connect(3);
  EXPECT_EQ(pcsc.openCards, 1);
  EXPECT_EQ(pcsc.openContexts, 1);
}

TEST_F(SamFacade, MakesOneAttemptForOneZeroOrANegativeNumber) {
  for (const int attempts : {1, 0, -1, INT_MIN}) {
    pcsc.calls.clear();
    EXPECT_EQ(facade->SAM_connect(attempts), 1);
    EXPECT_EQ(countCalls("SCardConnect"), 1) << attempts;
    EXPECT_EQ(countCalls("sleep"), 1) << attempts;
  }
}

TEST_F(SamFacade, ReturnsTheResultOfTheLastAttempt) {
  failTries(1);
  EXPECT_EQ(facade->SAM_connect(2), 1);
  EXPECT_EQ(output.text(), not_connected + connected);
}

TEST_F(SamFacade, ReportsAFailedLastAttemptAndKeepsItsChannel) {
  pcsc.fail("SCardEstablishContext", a_failure, 2);
  EXPECT_EQ(facade->SAM_connect(2), 0);
  EXPECT_EQ(output.text(), connected + not_connected);
  EXPECT_TRUE(facade->channelIsReady());
  EXPECT_FALSE(facade->SAM_isConnected());
}

TEST_F(SamFacade, SucceedsWithoutAReaderThatQualifies) {
  pcsc.readers = {"KRV MVX3 Terminal 00 00"};
  EXPECT_EQ(facade->SAM_connect(1), 1);
  EXPECT_FALSE(facade->SAM_isConnected());
  EXPECT_TRUE(facade->channelIsReady());
  EXPECT_EQ(output.text(), connected);
}

TEST_F(SamFacade, DisconnectsFirstWhenThereIsAChannel) {
  facade->SAM_connect(1);
  pcsc.calls.clear();
  facade->SAM_connect(1);
  EXPECT_EQ(pcsc.callNames(), (Calls{"SCardDisconnect", "SCardReleaseContext", "SCardEstablishContext",
                                     "SCardListReaders", "SCardConnect", "SCardFreeMemory", "sleep"}));
  EXPECT_EQ(output.text(), connected + disconnected + connected);
}

TEST_F(SamFacade, LeavesStandardOutputInHexadecimalMode) {
  facade->SAM_connect(1);
  std::cout << 255;
  EXPECT_EQ(output.text(), connected + "ff");
}

TEST_F(SamFacade, FlushesEachLine) {
  facade->SAM_connect(2);
  facade->SAM_disconnect();
  EXPECT_EQ(output.flushes(), 3);
}

TEST_F(SamFacade, BreaksItsLineOffWhenTheTimeHasNoText) {
  FixedClock::instance().hasText = false;
  EXPECT_EQ(facade->SAM_connect(1), 1);
  EXPECT_TRUE(std::cout.bad());
  EXPECT_EQ(output.text(), "SAM connexion at ");
}

// ---- exceptions in an attempt

class SamFacadeException : public SamFacade {
 protected:
  // Makes the nth call of a PC/SC function throw.
  void raise(const std::string& function, int nth = 1) {
    pcsc.onCall = [function, left = nth](const std::string& called) mutable {
      if (called == function && --left == 0) throw std::runtime_error("out of order");
    };
  }
};

TEST_F(SamFacadeException, CostsTheAttemptAndItsChannel) {
  raise("SCardConnect");
  EXPECT_EQ(facade->SAM_connect(1), 0);
  EXPECT_FALSE(facade->channelIsReady());
  EXPECT_EQ(output.text(), "SAM: out of order\n");
  EXPECT_EQ(pcsc.callNames().back(), "sleep");
  EXPECT_EQ(pcsc.openContexts, 0);
}

TEST_F(SamFacadeException, DoesNotEndTheAttempts) {
  raise("SCardEstablishContext");
  EXPECT_EQ(facade->SAM_connect(2), 1);
  EXPECT_EQ(output.text(), "SAM: out of order\n" + connected);
  EXPECT_EQ(countCalls("sleep"), 2);
}

TEST_F(SamFacadeException, LeavesTheResultOfTheAttemptBefore) {
  raise("SCardEstablishContext", 2);
  EXPECT_EQ(facade->SAM_connect(2), 1);
  EXPECT_EQ(output.text(), connected + "SAM: out of order\n");
  EXPECT_FALSE(facade->channelIsReady());
  EXPECT_EQ(pcsc.openCards, 0);
}

TEST_F(SamFacadeException, IsNotPassedOnWhateverTheSwitch) {
  facade->enableExternalException(true);
  raise("SCardListReaders");
  EXPECT_EQ(facade->SAM_connect(1), 0);
}

// Raises an exception out of the first line end that a stream asks for; the stream stays good.
class FailingLineEnd : public std::ctype<char> {
 protected:
  const char* do_widen(const char* low, const char* high, char* to) const override {
    if (!std::exchange(m_hasFailed, true)) throw std::runtime_error("no line end");
    return std::ctype<char>::do_widen(low, high, to);
  }

 private:
  mutable bool m_hasFailed = false;
};

class SamFacadeLog : public SamFacade {
 protected:
  void failNextLineEnd() { std::cout.imbue(std::locale(std::locale::classic(), new FailingLineEnd)); }
};

TEST_F(SamFacadeLog, ReportsAnExceptionOfItsDisconnectLine) {
  facade->SAM_connect(1);
  failNextLineEnd();
  EXPECT_EQ(facade->SAM_disconnect(), 0);
  EXPECT_EQ(output.text(), connected + "SAM disconnexion at " + the_time + "disconnect : no line end\n");
  EXPECT_FALSE(facade->channelIsReady());
  EXPECT_EQ(facade->SAM_disconnect(), 1);
}

TEST_F(SamFacadeLog, ThrowsAPlainExceptionForItsDisconnectLineWhenExternalExceptionsAreOn) {
  facade->SAM_connect(1);
  facade->enableExternalException(true);
  failNextLineEnd();
  try {
    facade->SAM_disconnect();
    ADD_FAILURE() << "no exception";
  } catch (const std::exception& e) {
    EXPECT_EQ(typeid(e), typeid(std::exception));
  }
  EXPECT_EQ(pcsc.openCards, 0);
  EXPECT_EQ(facade->SAM_disconnect(), 1);
}

TEST_F(SamFacadeLog, ThrowsNothingWhenTheStreamRaisesForEveryWrite) {
  facade->SAM_connect(1);
  FixedClock::instance().hasText = false;
  std::cout.exceptions(std::ios::badbit);
  EXPECT_EQ(facade->SAM_disconnect(), 0);
  EXPECT_EQ(facade->SAM_connect(1), 1);
  std::cout.exceptions(std::ios::goodbit);
  EXPECT_FALSE(facade->channelIsReady());
}

// ---- disconnect

TEST_F(SamFacade, DisconnectsWithOneAndSilentlyWithoutAChannel) {
  EXPECT_EQ(facade->SAM_disconnect(), 1);
  EXPECT_EQ(output.text(), "");
  EXPECT_TRUE(pcsc.calls.empty());
}

TEST_F(SamFacade, DisconnectsWithZeroAndThenWithOne) {
  facade->SAM_connect(1);
  pcsc.calls.clear();
  EXPECT_EQ(facade->SAM_disconnect(), 0);
  EXPECT_EQ(pcsc.calls,
            (Calls{"SCardDisconnect(card 101, disposition 0)", "SCardReleaseContext(context 1)"}));
  EXPECT_EQ(output.text(), connected + disconnected);
  EXPECT_EQ(facade->SAM_disconnect(), 1);
}

TEST_F(SamFacade, DisconnectsThoughPcscFails) {
  facade->SAM_connect(1);
  facade->enableExternalException(true);
  pcsc.fail("SCardDisconnect", a_failure);
  pcsc.fail("SCardReleaseContext", a_failure);
  EXPECT_EQ(facade->SAM_disconnect(), 0);
  EXPECT_FALSE(facade->channelIsReady());
}

TEST_F(SamFacade, LeaksNothingInTenThousandConnections) {
  for (int i = 0; i < 10000; ++i) {
    if (i % 2 == 0) pcsc.fail("SCardListReaders", a_failure);
    facade->SAM_connect(1);
    pcsc.calls.clear();
  }
  facade->SAM_disconnect();
  EXPECT_EQ(pcsc.openContexts + pcsc.openCards + pcsc.openLists, 0);
}

// ---- a channel without a connection

TEST_F(SamFacade, HasNoChannelAtFirst) {
  EXPECT_FALSE(facade->channelIsReady());
  EXPECT_FALSE(facade->SAM_isConnected());
}

TEST_F(SamFacade, MakesAnUnconnectedChannelOnRequest) {
  EXPECT_EQ(facade->findSAMConnection(), 0);
  EXPECT_TRUE(facade->channelIsReady());
  EXPECT_FALSE(facade->SAM_isConnected());
  EXPECT_TRUE(pcsc.calls.empty());
  EXPECT_EQ(output.text(), "");
}

TEST_F(SamFacade, LeavesAChannelThatExistsAlone) {
  facade->SAM_connect(1);
  EXPECT_EQ(facade->findSAMConnection(), 0);
  EXPECT_TRUE(facade->SAM_isConnected());
}

// ---- version and unlock

TEST_F(SamFacade, ReadsNoSerialNumberWithoutAChannel) {
  char serial[7] = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_FALSE(facade->SAM_getVersion(serial));
  EXPECT_EQ(serial[0], 1);
  EXPECT_TRUE(pcsc.calls.empty());
}

TEST_F(SamFacade, ReadsTheSerialNumberOfSevenBytes) {
  facade->SAM_connect(1);
  pcsc.reply(unhex("04 01 01 03 02 18 05 04 01 01 03 02 18 05 04 A1 B2 C3 D4 E5 F6 FF FF 90 00"));
  Bytes serial(8, 0xEE);
  EXPECT_TRUE(facade->SAM_getVersion(reinterpret_cast<char*>(serial.data())));
  EXPECT_EQ(serial, unhex("04 A1 B2 C3 D4 E5 F6 EE"));
}

TEST_F(SamFacade, ClearsSevenBytesWhenTheVersionDoesNotMatch) {
  facade->SAM_connect(1);
  pcsc.reply(unhex("04 01 01 02 02 18 05 04 01 01 03 02 18 05 04 A1 B2 C3 D4 E5 F6 FF FF 90 00"));
  Bytes serial(8, 0xEE);
  EXPECT_FALSE(facade->SAM_getVersion(reinterpret_cast<char*>(serial.data())));
  EXPECT_EQ(serial, unhex("00 00 00 00 00 00 00 EE"));
}

TEST_F(SamFacade, ReadsTheSerialNumberInTheCallAfterTheOneThatConnects) {
  facade->findSAMConnection();
  pcsc.reply(unhex("04 01 01 03 02 18 05 04 01 01 03 02 18 05 04 A1 B2 C3 D4 E5 F6 FF FF 90 00"));
  char serial[7];
  EXPECT_FALSE(facade->SAM_getVersion(serial));
  EXPECT_TRUE(facade->SAM_getVersion(serial));
}

TEST_F(SamFacade, UnlocksNothingWithoutAChannel) {
  Bytes key = UnlockVector::instance().key;
  EXPECT_FALSE(facade->SAM_unlock(key.data(), 16));
  EXPECT_TRUE(pcsc.calls.empty());
}

TEST_F(SamFacade, UnlocksTheModule) {
  facade->SAM_connect(1);
  scriptUnlock();
  Bytes key = UnlockVector::instance().key;
  EXPECT_TRUE(facade->SAM_unlock(key.data(), 16));
  EXPECT_EQ(pcsc.apdus.size(), 3U);
}

TEST_F(SamFacade, ReportsAFailedUnlock) {
  facade->SAM_connect(1);
  scriptUnlock();
  Bytes key(16, 0x00);
  EXPECT_FALSE(facade->SAM_unlock(key.data(), 16));
}

// The facade's data in its documented order.
struct FacadeFields {
  SAMChannel* channel;
  bool externalException;
  std::ostream* log;
  int unlocked;
};

FacadeFields fieldsOf(const SAMInterfaces* facade) {
  FacadeFields fields{};
  static_assert(sizeof fields == sizeof *facade);
  std::memcpy(&fields, reinterpret_cast<const char*>(facade), sizeof fields);
  return fields;
}

TEST_F(SamFacade, HasItsDataInTheDocumentedOrder) {
  EXPECT_EQ(fieldsOf(facade).channel, nullptr);
  EXPECT_EQ(fieldsOf(facade).log, &std::cout);
  facade->enableExternalException(true);
  facade->findSAMConnection();
  EXPECT_NE(fieldsOf(facade).channel, nullptr);
  EXPECT_TRUE(fieldsOf(facade).externalException);
}

TEST_F(SamFacade, IsMarkedUnlockedByASuccessfulUnlockAlone) {
  Bytes key = UnlockVector::instance().key;
  facade->SAM_unlock(key.data(), 16);
  EXPECT_EQ(fieldsOf(facade).unlocked, 0);
  facade->SAM_connect(1);
  facade->SAM_unlock(key.data(), 16);
  EXPECT_EQ(fieldsOf(facade).unlocked, 0);
  scriptUnlock();
  facade->SAM_unlock(key.data(), 16);
  EXPECT_EQ(fieldsOf(facade).unlocked, 1);
}

TEST_F(SamFacade, StaysMarkedUnlockedWhateverFollows) {
  Bytes key = UnlockVector::instance().key;
  facade->SAM_connect(1);
  scriptUnlock();
  facade->SAM_unlock(key.data(), 16);
  facade->SAM_unlock(key.data(), 16);
  facade->SAM_disconnect();
  facade->SAM_connect(1);
  EXPECT_EQ(fieldsOf(facade).unlocked, 1);
}

// ---- version, switch, log

TEST_F(SamFacade, NamesItsVersion) {
  EXPECT_STREQ(facade->dllVersion(), "VELMORIN SAM DLL\tV4.0.1.1\tJul  2 2015");
  EXPECT_EQ(facade->dllVersion(), facade->dllVersion());
}

TEST_F(SamFacade, RebuildsItsVersionInEveryCall) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): what a careless caller might do
  const_cast<char*>(facade->dllVersion())[0] = 'X';
  EXPECT_EQ(facade->dllVersion()[0], 'V');
}

TEST_F(SamFacade, HasExternalExceptionsOffAtFirst) { EXPECT_FALSE(facade->externalExceptionIsEnable()); }

TEST_F(SamFacade, SwitchesExternalExceptionsOnAndOff) {
  facade->enableExternalException(true);
  EXPECT_TRUE(facade->externalExceptionIsEnable());
  facade->enableExternalException(false);
  EXPECT_FALSE(facade->externalExceptionIsEnable());
}

TEST_F(SamFacade, AcceptsALogFileAndGoesOnWritingToStandardOutput) {
  EXPECT_EQ(facade->openLogStream("/nonexistent/log"), 0);
  EXPECT_EQ(facade->openLogStream(nullptr), 0);
  facade->SAM_connect(1);
  EXPECT_EQ(facade->closeLogStream(), 0);
  EXPECT_EQ(output.text(), connected);
}

}  // namespace
