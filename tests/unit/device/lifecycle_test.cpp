#include <mvx2/MVX2Exception.h>
#include <mvx2/MVX2Interfaces.h>
#include <mvx2/NullStream.h>

#include "support/log_capture.h"
#include "support/scripted_pcsc.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <regex>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using mvx2test::LogCapture;
using mvx2test::ScriptedPcsc;
using velmorin::CONNECT_DEFAULT;
using velmorin::CONNECT_USB;
using velmorin::ConnectMode_t;
using velmorin::MVX2Interfaces;
using Calls = std::vector<std::string>;

constexpr LONG a_failure = static_cast<LONG>(SCARD_E_NO_SERVICE);
const std::string failed_try = "USB: SCardEstablishContext (0x8010001d) [USBChannel:USBChannel:26]";
const std::string time_text = "[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]{2} [0-9:]{8} [0-9]{4}\n\n";

class Facade : public testing::Test {
 protected:
  void SetUp() override {
    pcsc.reset();
    facade = MVX2Interfaces::getInstance(-1);
  }
  void TearDown() override {
    for (const int slot : {0, 1}) MVX2Interfaces::getInstance(slot)->releaseInstance();
  }

  void failTries(int tries) {
    for (int i = 1; i <= tries; ++i) pcsc.fail("SCardEstablishContext", a_failure, i);
  }

  int countCalls(const std::string& name) const {
    int count = 0;
    for (const std::string& call : pcsc.callNames()) count += call == name ? 1 : 0;
    return count;
  }

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
  MVX2Interfaces* facade = nullptr;
};

// ---- slots

TEST_F(Facade, IsTheSameForASlotEveryTime) {
  EXPECT_EQ(MVX2Interfaces::getInstance(1), MVX2Interfaces::getInstance(1));
}

TEST_F(Facade, OfSlotMinusOneIsTheOneOfSlotZero) { EXPECT_EQ(MVX2Interfaces::getInstance(0), facade); }

TEST_F(Facade, DiffersFromSlotToSlot) { EXPECT_NE(MVX2Interfaces::getInstance(1), facade); }

TEST_F(Facade, DoesNotExistForAnyOtherSlot) {
  for (const int slot : {2, 5, -2, INT_MAX, INT_MIN})
    EXPECT_EQ(MVX2Interfaces::getInstance(slot), nullptr) << slot;
}

// The reader that SCardConnect is given when this facade connects among these readers.
std::string readerTaken(MVX2Interfaces* facade, const std::vector<std::string>& readers) {
  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
  pcsc.readers = readers;
  facade->connect(1, CONNECT_DEFAULT);
  const std::string& call = pcsc.calls.at(2);
  const std::size_t start = call.find(", ") + 2;
  return call.substr(start, call.find(", share") - start);
}

TEST_F(Facade, OfSlotMinusOneTakesEitherKindOfReader) {
  EXPECT_EQ(readerTaken(facade, {"KRV MVX2", "KRV MVX3"}), "KRV MVX3");
}

TEST_F(Facade, KeepsTheReaderSelectionOfItsFirstCall) {
  EXPECT_EQ(readerTaken(MVX2Interfaces::getInstance(0), {"KRV MVX2", "KRV MVX3"}), "KRV MVX3");
}

TEST_F(Facade, OfSlotZeroTakesAReaderOfAnotherModel) {
  facade->releaseInstance();
  EXPECT_EQ(readerTaken(MVX2Interfaces::getInstance(0), {"KRV MVX2", "KRV MVX3"}), "KRV MVX2");
}

TEST_F(Facade, OfSlotOneTakesAnMvx3) {
  EXPECT_EQ(readerTaken(MVX2Interfaces::getInstance(1), {"KRV MVX3", "KRV MVX2"}), "KRV MVX3");
}

TEST_F(Facade, IsDestroyedByReleaseAndMadeAnewOnDemand) {
  facade->enableExternalException(true);
  facade->releaseInstance();
  EXPECT_FALSE(MVX2Interfaces::getInstance(0)->externalExceptionIsEnable());
}

TEST_F(Facade, DisconnectsWhenItIsReleased) {
  facade->connect(1, CONNECT_DEFAULT);
  facade->releaseInstance();
  EXPECT_EQ(pcsc.openCards, 0);
  EXPECT_EQ(pcsc.openContexts, 0);
}

TEST_F(Facade, IsReleasedAloneWhenTheOtherSlotIsInUse) {
  MVX2Interfaces* const other = MVX2Interfaces::getInstance(1);
  other->enableExternalException(true);
  facade->releaseInstance();
  EXPECT_EQ(MVX2Interfaces::getInstance(1), other);
  EXPECT_TRUE(other->externalExceptionIsEnable());
}

TEST_F(Facade, LeavesTheCommonLogBufferOpenWhenItGoes) {
  facade->releaseInstance();
  EXPECT_TRUE(null_stream.is_open());
}

// ---- connect

TEST_F(Facade, ConnectsAndOpensWithTheEmptyCommand) {
  EXPECT_TRUE(facade->connect(1, CONNECT_USB));
  EXPECT_EQ(pcsc.requests(), std::vector<std::string>{"\r"});
  EXPECT_EQ(pcsc.callNames(),
            (Calls{"SCardEstablishContext", "SCardListReaders", "SCardConnect", "SCardFreeMemory",
                   "SCardBeginTransaction", "SCardTransmit", "SCardEndTransaction"}));
}

TEST_F(Facade, ConnectsThoughTheTerminalDoesNotAnswer) {
  pcsc.fail("SCardTransmit", a_failure);
  EXPECT_TRUE(facade->connect(1, CONNECT_DEFAULT));
}

TEST_F(Facade, ConnectsToAnEmptyReaderList) {
  pcsc.readers = {};
  EXPECT_TRUE(facade->connect(1, CONNECT_DEFAULT));
  EXPECT_EQ(facade->channelIsReady(), 1);
}

TEST_F(Facade, TriesAsOftenAsAskedAndSleepsAfterEachFailure) {
  failTries(3);
  EXPECT_FALSE(facade->connect(3, CONNECT_DEFAULT));
  EXPECT_EQ(pcsc.callNames(), (Calls{"SCardEstablishContext", "sleep", "SCardEstablishContext", "sleep",
                                     "SCardEstablishContext", "sleep"}));
  EXPECT_EQ(pcsc.calls[1], "sleep(1)");
}

TEST_F(Facade, StopsTryingOnceConnected) {
  failTries(1);
  EXPECT_TRUE(facade->connect(3, CONNECT_DEFAULT));
  EXPECT_EQ(countCalls("SCardEstablishContext"), 2);
  EXPECT_EQ(countCalls("sleep"), 1);
}

TEST_F(Facade, TriesOnceForOneZeroOrANegativeNumberOfAttempts) {
  for (const int attempts : {1, 0, -1, INT_MIN}) {
    pcsc.reset();
    failTries(5);
    EXPECT_FALSE(facade->connect(attempts, CONNECT_DEFAULT));
    EXPECT_EQ(pcsc.callNames(), (Calls{"SCardEstablishContext", "sleep"})) << attempts;
  }
}

TEST_F(Facade, NeverConnectsInAnotherMode) {
  for (const int mode : {0, 1, 3, -2}) {
    pcsc.reset();
    EXPECT_FALSE(facade->connect(2, static_cast<ConnectMode_t>(mode)));
    EXPECT_EQ(pcsc.calls, (Calls{"sleep(1)", "sleep(1)"})) << mode;
  }
}

TEST_F(Facade, DisconnectsFirstWhenItIsConnected) {
  facade->connect(1, CONNECT_DEFAULT);
  pcsc.calls.clear();
  EXPECT_TRUE(facade->connect(1, CONNECT_DEFAULT));
  EXPECT_EQ(pcsc.callNames()[0], "SCardDisconnect");
  EXPECT_EQ(pcsc.callNames()[1], "SCardReleaseContext");
  EXPECT_EQ(pcsc.openCards, 1);
}

TEST_F(Facade, DisconnectsFirstInAnotherModeToo) {
  facade->connect(1, CONNECT_DEFAULT);
  pcsc.calls.clear();
  EXPECT_FALSE(facade->connect(1, static_cast<ConnectMode_t>(0)));
  EXPECT_EQ(pcsc.callNames(), (Calls{"SCardDisconnect", "SCardReleaseContext", "sleep"}));
  EXPECT_EQ(facade->channelIsReady(), 0);
}

TEST_F(Facade, HasNoChannelAfterAFailedConnect) {
  facade->connect(1, CONNECT_DEFAULT);
  failTries(1);
  EXPECT_FALSE(facade->connect(1, CONNECT_DEFAULT));
  EXPECT_EQ(facade->channelIsReady(), 0);
}

TEST_F(Facade, NeverThrowsOutOfConnectWhateverTheSwitch) {
  facade->enableExternalException(true);
  failTries(1);
  EXPECT_FALSE(facade->connect(1, CONNECT_DEFAULT));
}

TEST_F(Facade, LeaksNothingInTenThousandFailedConnects) {
  for (int i = 0; i < 10000; ++i) {
    pcsc.fail(i % 2 == 0 ? "SCardConnect" : "SCardListReaders", a_failure);
    ASSERT_FALSE(facade->connect(1, CONNECT_DEFAULT));
    pcsc.calls.clear();
  }
  EXPECT_EQ(pcsc.openContexts, 0);
  EXPECT_EQ(pcsc.openCards, 0);
  EXPECT_EQ(pcsc.openLists, 0);
}

// ---- reconnect and disconnect

TEST_F(Facade, ReconnectsByDisconnectingAndConnecting) {
  facade->connect(1, CONNECT_USB);
  pcsc.calls.clear();
  EXPECT_TRUE(facade->reconnect(1));
  EXPECT_EQ(pcsc.callNames(), (Calls{"SCardDisconnect", "SCardReleaseContext", "SCardEstablishContext",
                                     "SCardListReaders", "SCardConnect", "SCardFreeMemory",
                                     "SCardBeginTransaction", "SCardTransmit", "SCardEndTransaction"}));
}

TEST_F(Facade, ReconnectsInTheDefaultModeWhateverTheLastOne) {
  facade->connect(0, static_cast<ConnectMode_t>(1));
  EXPECT_TRUE(facade->reconnect(0));
}

TEST_F(Facade, ReconnectsWithoutAChannel) { EXPECT_TRUE(facade->reconnect(0)); }

TEST_F(Facade, ReportsAFailedReconnect) {
  failTries(2);
  EXPECT_FALSE(facade->reconnect(2));
  EXPECT_EQ(countCalls("sleep"), 2);
}

TEST_F(Facade, DisconnectsWithZeroAndThenWithOne) {
  facade->connect(1, CONNECT_DEFAULT);
  EXPECT_EQ(facade->disconnect(), 0);
  EXPECT_EQ(pcsc.openCards, 0);
  EXPECT_EQ(facade->disconnect(), 1);
}

TEST_F(Facade, DisconnectsWithOneWithoutAChannel) { EXPECT_EQ(facade->disconnect(), 1); }

TEST_F(Facade, DisconnectsWithoutThrowingThoughPcscFails) {
  facade->connect(1, CONNECT_DEFAULT);
  facade->enableExternalException(true);
  pcsc.fail("SCardDisconnect", a_failure);
  pcsc.fail("SCardReleaseContext", a_failure);
  EXPECT_EQ(facade->disconnect(), 0);
  EXPECT_EQ(facade->disconnect(), 1);
}

// ---- readiness and liveness

TEST_F(Facade, IsNotReadyWithoutAChannel) { EXPECT_EQ(facade->channelIsReady(), 0); }

TEST_F(Facade, IsReadyOnceConnected) {
  facade->connect(1, CONNECT_DEFAULT);
  facade->enableExternalException(true);
  EXPECT_EQ(facade->channelIsReady(), 1);
}

TEST_F(Facade, ThrowsTheMissingChannelWhenExternalExceptionsAreOn) {
  facade->enableExternalException(true);
  try {
    facade->channelIsReady();
    FAIL() << "no exception";
  } catch (const MVX2Exception& e) {
    EXPECT_STREQ(e.what(), "null Pointer (0x0) [channelIsReady:MVX2Interfaces:118]");
  }
}

TEST_F(Facade, IsConnectedAfterConnectAndProbesWithTheEmptyCommand) {
  facade->connect(1, CONNECT_DEFAULT);
  pcsc.apdus.clear();
  EXPECT_TRUE(facade->isConnected());
  EXPECT_EQ(pcsc.requests(), std::vector<std::string>{"\r"});
}

TEST_F(Facade, IsConnectedThoughTheTerminalDoesNotAnswer) {
  facade->connect(1, CONNECT_DEFAULT);
  pcsc.fail("SCardBeginTransaction", a_failure);
  EXPECT_TRUE(facade->isConnected());
}

TEST_F(Facade, IsNotConnectedWithoutAChannelAndLogsNothing) {
  const LogCapture log;
  EXPECT_FALSE(facade->isConnected());
  EXPECT_EQ(log.text(), "");
}

TEST_F(Facade, ThrowsAPlainExceptionFromTheProbeWithoutAChannelWhenExternalExceptionsAreOn) {
  facade->enableExternalException(true);
  const LogCapture log;
  try {
    facade->isConnected();
    FAIL() << "no exception";
  } catch (const std::exception& e) {
    EXPECT_EQ(typeid(e), typeid(std::exception));
  }
  EXPECT_EQ(log.text(), "isBootloader : null Pointer (0x0) [channelIsReady:MVX2Interfaces:118]\n");
}

// ---- log

TEST_F(Facade, LogsASuccessfulConnectWithATimeAndAnEmptyLine) {
  const LogCapture log;
  facade->connect(1, CONNECT_DEFAULT);
  EXPECT_TRUE(std::regex_match(log.text(), std::regex("USB connexion at " + time_text))) << log.text();
}

TEST_F(Facade, LogsEveryFailedTry) {
  failTries(2);
  const LogCapture log;
  facade->connect(2, CONNECT_DEFAULT);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{failed_try, failed_try}));
}

TEST_F(Facade, LogsNothingForATryInAnotherMode) {
  const LogCapture log;
  facade->connect(1, static_cast<ConnectMode_t>(0));
  EXPECT_EQ(log.text(), "");
}

TEST_F(Facade, LogsASuccessfulDisconnectWithATimeAndAnEmptyLine) {
  facade->connect(1, CONNECT_DEFAULT);
  const LogCapture log;
  facade->disconnect();
  EXPECT_TRUE(std::regex_match(log.text(), std::regex("MVX2Interfaces disconnexion at " + time_text)))
      << log.text();
}

TEST_F(Facade, LogsNothingForADisconnectWithoutAChannel) {
  const LogCapture log;
  facade->disconnect();
  EXPECT_EQ(log.text(), "");
}

TEST_F(Facade, AcceptsALogFileAndMakesNone) {
  std::string directory = "/tmp/mvx2-log-XXXXXX";
  ASSERT_NE(mkdtemp(directory.data()), nullptr);
  const std::string path = directory + "/log";
  EXPECT_EQ(facade->openLogStream(path.c_str()), 0);
  EXPECT_EQ(facade->openLogStream(nullptr), 0);
  failTries(1);
  facade->connect(1, CONNECT_DEFAULT);
  EXPECT_EQ(facade->closeLogStream(), 0);
  EXPECT_EQ(rmdir(directory.c_str()), 0) << "the directory is not empty";
  EXPECT_TRUE(null_stream.is_open());
}

// ---- names, version, switch

TEST_F(Facade, HasNoPipeNameWithoutAChannel) {
  EXPECT_STREQ(facade->pipeName(), "No connected");
  EXPECT_STREQ(facade->productID(), "No connected");
}

TEST_F(Facade, HasAnEmptyPipeNameWhenConnected) {
  facade->connect(1, CONNECT_DEFAULT);
  EXPECT_STREQ(facade->pipeName(), "");
  EXPECT_STREQ(facade->productID(), "");
}

TEST_F(Facade, NamesItsVersion) {
  EXPECT_STREQ(facade->dllVersion(), "VELMORIN MVXx DLL\tV4.0.1.1\tJul  2 2015");
  EXPECT_EQ(facade->dllVersion(), facade->dllVersion());
}

TEST_F(Facade, RebuildsItsVersionInEveryCall) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): what a careless caller might do
  const_cast<char*>(facade->dllVersion())[0] = 'X';
  EXPECT_EQ(facade->dllVersion()[0], 'V');
}

TEST_F(Facade, HasExternalExceptionsOffAtFirst) { EXPECT_FALSE(facade->externalExceptionIsEnable()); }

TEST_F(Facade, SwitchesExternalExceptionsOnAndOff) {
  facade->enableExternalException(true);
  EXPECT_TRUE(facade->externalExceptionIsEnable());
  facade->enableExternalException(false);
  EXPECT_FALSE(facade->externalExceptionIsEnable());
}

}  // namespace
