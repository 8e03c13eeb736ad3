#include <mvx2/MVX2Interfaces.h>

#include "support/simulator.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

using mvx2test::sim;
using velmorin::CONNECT_DEFAULT;
using velmorin::MVX2Interfaces;

class Terminal : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(facade->connect(1, CONNECT_DEFAULT)); }
  void TearDown() override { facade->releaseInstance(); }

  MVX2Interfaces* facade = MVX2Interfaces::getInstance(1);
};

TEST_F(Terminal, TellsItsCredit) {
  sim("set credit 4711");
  EXPECT_EQ(facade->getCredit(), 4711);
  EXPECT_STREQ(facade->getCredit_CPtr(), "4711");
}

TEST_F(Terminal, IsConnected) {
  EXPECT_TRUE(facade->isConnected());
  EXPECT_STREQ(facade->pipeName(), "");
}

TEST_F(Terminal, AnswersTheSameAtEveryPrompt) {
  sim("set credit 12");
  EXPECT_EQ(facade->getCredit(), 12);
  EXPECT_FALSE(facade->isOnline());
  EXPECT_FALSE(facade->isBootloader());

  facade->online();
  EXPECT_TRUE(facade->isOnline());
  EXPECT_EQ(facade->getCredit(), 12);

  facade->quit();
  EXPECT_FALSE(facade->isOnline());

  facade->reboot();
  EXPECT_TRUE(facade->isBootloader());
  EXPECT_STRNE(facade->getBootVersion_CPtr(), "");
}

TEST_F(Terminal, KeepsTheInnerLinesOfAnAnswer) {
  sim("set listpurses 3 7 12");
  EXPECT_STREQ(facade->getListPurses_CPtr(), "3\n7\n12");
}

TEST_F(Terminal, ShowsTheWholeReplyOfAnUnframedExchange) {
  sim("set credit 5");
  EXPECT_EQ(std::string(facade->noFormatedTransaction("credit\r")), "credit\r\n5\r\n>\x90");
}

TEST_F(Terminal, AnswersAnUnknownWordWithAText) { EXPECT_STRNE(facade->transaction("nonsense"), ""); }

TEST_F(Terminal, RefusesAValueOutOfItsRangeWithATextThatATypedWriteTakesForZero) {
  EXPECT_STRNE(facade->setPincode_CPtr("10000"), "10000");
  EXPECT_EQ(facade->setPincode(10000), 0);
  EXPECT_EQ(facade->getPincode(), 1234);
}

// ---- faults of one exchange: the text exchange answers with nothing, and a reconnect heals

class TerminalFault : public Terminal, public testing::WithParamInterface<const char*> {};

TEST_P(TerminalFault, MakesATextExchangeEmptyAndIsHealedByReconnect) {
  sim("set credit 77");
  sim(std::string("fault ") + GetParam());
  EXPECT_STREQ(facade->getCredit_CPtr(), "");
  EXPECT_TRUE(facade->reconnect(1));
  EXPECT_EQ(facade->getCredit(), 77);
}

INSTANTIATE_TEST_SUITE_P(Carrying, TerminalFault,
                         testing::Values("transmit 1", "first 90 1", "truncate 1 1", "truncate 0 1",
                                         "extend 80 1", "transmit 1 after 1", "truncate 1 1 after 1",
                                         "extend 80 1 after 1"));

TEST_F(Terminal, AnswersLateWhenItIsDelayed) {
  sim("set credit 77");
  sim("fault delay 50 2");
  EXPECT_EQ(facade->getCredit(), 77);
}

TEST_F(Terminal, FailsARawExchangeAndReconnectsByItself) {
  sim("set credit 77");
  sim("fault transmit 1");
  EXPECT_STREQ(facade->sendAPDU("credit\r", 7), "No connected");
  EXPECT_EQ(facade->getCredit(), 77);
}

TEST_F(Terminal, ReportsAFailedRawExchangeAsAPlainExceptionWhenAsked) {
  facade->enableExternalException(true);
  sim("fault transmit 1");
  EXPECT_THROW(facade->sendAPDU("credit\r", 7), std::exception);
  EXPECT_EQ(facade->channelIsReady(), 1);
}

// Another program, connected to the same reader, that transmits when it is told to.
class OtherProgram {
 public:
  OtherProgram() {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0)
      throw std::runtime_error("no pipe");
    m_go = input[1];
    start(input[0], output[1]);
    close(input[0]);
    close(output[1]);
    char connected = 0;
    EXPECT_EQ(read(output[0], &connected, 1), 1) << "the other program could not connect";
    close(output[0]);
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram(OtherProgram&&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;
  OtherProgram& operator=(OtherProgram&&) = delete;
  ~OtherProgram() { close(m_go); }

  void transmit() const { ASSERT_EQ(write(m_go, "x", 1), 1); }

  // Whether it is still waiting for its turn, however long one looks.
  bool waits() const {
    usleep(300000);
    return waitpid(m_process, nullptr, WNOHANG) == 0;
  }

  bool hasTransmitted() const {
    int status = -1;
    waitpid(m_process, &status, 0);
    return status == 0;
  }

 private:
  // Through a shell, since the command holds the emulator too when there is one.
  void start(int input, int output) {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    std::string shell = "sh";
    std::string option = "-c";
    std::string command = "exec " MVX2_OTHER_PROGRAM;
    const std::array<char*, 4> argv = {shell.data(), option.data(), command.data(), nullptr};
    EXPECT_EQ(posix_spawn(&m_process, "/bin/sh", &files, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&files);
  }

  int m_go = -1;
  pid_t m_process = -1;
};

TEST_F(Terminal, IsOpenToOtherProgramsAfterASuccessfulExchange) {
  const OtherProgram other;
  facade->getCredit();
  other.transmit();
  EXPECT_TRUE(other.hasTransmitted());
}

TEST_F(Terminal, KeepsOtherProgramsWaitingAfterAFailedTextExchangeUntilDisconnected) {
  const OtherProgram other;
  sim("fault transmit 1");
  facade->getCredit();
  other.transmit();
  EXPECT_TRUE(other.waits());
  facade->disconnect();
  EXPECT_TRUE(other.hasTransmitted());
}

// ---- card, reader and daemon that go and come back

TEST_F(Terminal, HealsWhenItsReaderVanishesAndComesBack) {
  sim("set credit 77");
  sim("reader out");
  EXPECT_STREQ(facade->getCredit_CPtr(), "");
  EXPECT_FALSE(facade->reconnect(1));
  EXPECT_EQ(facade->channelIsReady(), 0);
  sim("reader in");
  EXPECT_TRUE(facade->reconnect(20));
  EXPECT_EQ(facade->getCredit(), 77);
}

TEST_F(Terminal, IsFoundByAPatientConnectOnceItsReaderIsThere) {
  sim("reader out");
  facade->disconnect();
  EXPECT_FALSE(facade->connect(2, CONNECT_DEFAULT));
  sim("reader in");
  EXPECT_TRUE(facade->connect(20, CONNECT_DEFAULT));
}

TEST_F(Terminal, HealsWhenTheDaemonIsKilledAndStartedAgain) {
  sim("daemon stop");
  EXPECT_STREQ(facade->getCredit_CPtr(), "");
  EXPECT_FALSE(facade->reconnect(1));
  EXPECT_STREQ(facade->getCredit_CPtr(), "No connected");
  EXPECT_EQ(facade->getCredit(), -1);
  sim("daemon start");
  EXPECT_TRUE(facade->reconnect(20));
  EXPECT_GT(facade->getCredit(), 0);
}

TEST_F(Terminal, HealsWhenTheDaemonIsRestartedInMidWork) {
  facade->getCredit();
  sim("daemon restart");
  EXPECT_STREQ(facade->getCredit_CPtr(), "");
  EXPECT_TRUE(facade->reconnect(20));
  EXPECT_GT(facade->getCredit(), 0);
}

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

TEST_F(Terminal, LeavesNoDescriptorBehindInManyFailedConnects) {
  sim("reader out");
  facade->connect(1, CONNECT_DEFAULT);
  const std::ptrdiff_t before = openDescriptors();
  for (int i = 0; i < 30; ++i) EXPECT_FALSE(facade->connect(1, CONNECT_DEFAULT));
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Terminal, ServesAThousandExchangesInARow) {
  for (int i = 0; i < 1000; ++i) {
    ASSERT_GE(facade->setPurse(static_cast<unsigned int>(i % 5)), 0);
    ASSERT_GT(facade->getCredit(), 0);
  }
}

}  // namespace
