// What the example programs show, beside the simulator.
#include "support/programs.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace {

using mvx2test::Background;
using mvx2test::Ended;
using mvx2test::sim;

std::string commandOf(const std::string& example) { return MVX2_EXAMPLE + example; }

Ended run(const std::string& example, const std::string& input = {}) {
  return mvx2test::runLines(commandOf(example), input);
}

TEST(ReadCredit, ShowsTheValuesOfTheTerminal) {
  sim("set credit 77");
  const Ended ended = run("read_credit");
  EXPECT_EQ(ended.out,
            "firmware  MVX3 SIM V1.0\nserial    30457\ncredit    77\ndebit     480\npurse     1\n");
  EXPECT_EQ(ended.exit, 0);
}

TEST(ReadCredit, SaysThatThereIsNoTerminal) {
  sim("reader out");
  const Ended ended = run("read_credit");
  EXPECT_EQ(ended.err, "No terminal: is it plugged in, and does pcscd run?\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(WriteAccount, WritesTheNumberAndShowsWhatTheTerminalHolds) {
  const Ended ended = run("write_account 815");
  EXPECT_EQ(ended.out, "account 815\n");
  EXPECT_EQ(ended.exit, 0);
  EXPECT_EQ(sim("get account"), "815");
}

TEST(WriteAccount, ShowsWhatTheTerminalSaysToANumberThatItRefuses) {
  const Ended ended = run("write_account lots");
  EXPECT_EQ(ended.err, "Not written: the terminal answered \"ERR value\" and holds \"4711\".\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(WriteAccount, TakesNoAnswerForWritten) {
  sim("fault transmit 100");
  const Ended ended = run("write_account 815");
  EXPECT_EQ(ended.err, "Not written: the terminal answered \"\" and holds \"\".\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(PollCard, TellsWhenACardComesAndGoes) {
  Background poll(commandOf("poll_card"));
  EXPECT_TRUE(poll.awaitOutput("no terminal\ncard 0x4B1D5E27\n"));
  sim("set switch 0");
  EXPECT_TRUE(poll.awaitOutput("no card\n"));
  sim("set cardid 0x01020304");
  sim("set switch 1");
  EXPECT_TRUE(poll.awaitOutput("no card\ncard 0x01020304\n"));
}

TEST(PollCard, GoesOnWhenTheTerminalIsBack) {
  Background poll(commandOf("poll_card"));
  EXPECT_TRUE(poll.awaitOutput("card 0x4B1D5E27\n"));
  sim("reader out");
  EXPECT_TRUE(poll.awaitOutput("card 0x4B1D5E27\nno terminal\n"));
  sim("reader in");
  EXPECT_TRUE(poll.awaitOutput("no terminal\ncard 0x4B1D5E27\nno terminal\ncard 0x4B1D5E27\n"));
}

TEST(PollCard, GoesOnAfterAFailedExchange) {
  Background poll(commandOf("poll_card"));
  EXPECT_TRUE(poll.awaitOutput("card 0x4B1D5E27\n"));
  sim("fault transmit 1");
  EXPECT_TRUE(poll.awaitOutput("no terminal\ncard 0x4B1D5E27\nno terminal\ncard 0x4B1D5E27\n"));
}

TEST(PursesGroups, ShowsTheLists) {
  sim("set listpurses 1 2 3 4 5 6 7 8 9 10");
  const Ended ended = run("purses_groups");
  EXPECT_EQ(ended.out, "purses 1 2 3 4 5 6 7 8 9 10\ngroups 1 4\nin use 1\n");
  EXPECT_EQ(ended.exit, 0);
}

TEST(PursesGroups, ChangesToAPurse) {
  const Ended ended = run("purses_groups 2");
  EXPECT_EQ(ended.out, "purses 1 2 5\ngroups 1 4\nin use 2\n");
  EXPECT_EQ(ended.exit, 0);
}

TEST(PursesGroups, SaysThatThePurseWasNotChanged) {
  const Ended ended = run("purses_groups 256");
  EXPECT_EQ(ended.err, "The terminal did not change to purse 256.\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(RawApdu, ShowsTheReplyToItsLastByte) {
  sim("set cardid 0x00AB00CD");
  const Ended ended = run("raw_apdu");
  EXPECT_EQ(ended.out, "00AB00CD90009000\n");
  EXPECT_EQ(ended.exit, 0);
}

TEST(RawApdu, SaysWhatFailed) {
  sim("card out");
  const Ended ended = run("raw_apdu");
  EXPECT_EQ(ended.err, "failed: SCardConnect (0x8010000c) [USBChannel:USBChannel:97]\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(UnlockSam, UnlocksAndShowsTheSerialNumber) {
  const Ended ended = run("unlock_sam", "000102030405060708090A0B0C0D0E0F\n");
  EXPECT_TRUE(mvx2test::holds(ended.out, "SAM unlocked, serial 04112233445566\n")) << ended.out;
  EXPECT_EQ(ended.exit, 0);
}

TEST(UnlockSam, SaysThatTheModuleRefusesAnotherKey) {
  const Ended ended = run("unlock_sam", "000102030405060708090A0B0C0D0E00\n");
  EXPECT_EQ(ended.err, "The module refuses.\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(UnlockSam, SaysThatThereIsNoModule) {
  sim("reader out sam");
  EXPECT_EQ(run("unlock_sam", "000102030405060708090A0B0C0D0E0F\n").err,
            "No module: is its reader plugged in?\n");
}

TEST(UnlockSam, WantsAWholeKey) {
  EXPECT_EQ(run("unlock_sam", "00010203\n").err, "The key has 32 hexadecimal digits.\n");
}

// RFC 4493, section 4, example 2.
TEST(HostMacs, ComputesAnAesCmac) {
  const std::string message = R"(\153\301\276\342\056\100\237\226\351\075\176\021\163\223\027\052)";
  const Ended ended = run("host_macs \"$(printf '" + message + "')\"", "2b7e151628aed2a6abf7158809cf4f3c\n");
  EXPECT_EQ(ended.out, "AES-CMAC 070a16b46b4d4144f79bdd9dd04a287c\n");
}

// FIPS 113, appendix 2.
TEST(HostMacs, ComputesADesMac) {
  const Ended ended = run("host_macs '7654321 Now is the time for '", "0123456789abcdef\n");
  EXPECT_EQ(ended.out, "DES-MAC f1d30f68\n");
}

TEST(HostMacs, WantsAKeyOfAKnownLength) {
  const Ended ended = run("host_macs message", "0123\n");
  EXPECT_EQ(ended.err, "A key of 32 or 16 digits, and a message of at most 255 bytes.\n");
  EXPECT_EQ(ended.exit, 1);
}

TEST(Service, TellsChangesUntilItIsToldToEnd) {
  Background service(commandOf("service"));
  EXPECT_TRUE(service.awaitOutput("connected\ncredit 1250\n"));
  sim("set credit 1300");
  EXPECT_TRUE(service.awaitOutput("credit 1300\n"));
  service.send(SIGTERM);
  EXPECT_EQ(service.await(), 0);
  EXPECT_EQ(service.out(), "connected\ncredit 1250\ncredit 1300\nended\n");
}

TEST(Service, SurvivesThatTheTerminalIsUnplugged) {
  Background service(commandOf("service"));
  EXPECT_TRUE(service.awaitOutput("credit 1250\n"));
  sim("reader out");
  EXPECT_TRUE(service.awaitOutput("lost\n"));
  sim("reader in");
  EXPECT_TRUE(service.awaitOutput("lost\nconnected\ncredit 1250\n"));
  service.send(SIGTERM);
  EXPECT_EQ(service.await(), 0);
}

TEST(Service, SurvivesThatTheDaemonIsRestarted) {
  Background service(commandOf("service"));
  EXPECT_TRUE(service.awaitOutput("credit 1250\n"));
  sim("daemon restart");
  EXPECT_TRUE(service.awaitOutput("lost\nconnected\ncredit 1250\n"));
}

TEST(Service, WaitsForTheTerminalToCome) {
  sim("reader out");
  Background service(commandOf("service"));
  sim("reader in");
  EXPECT_TRUE(service.awaitOutput("connected\ncredit 1250\n"));
}

TEST(Service, EndsWhileItWaitsForTheTerminal) {
  Background service(commandOf("service"));
  EXPECT_TRUE(service.awaitOutput("credit 1250\n"));
  sim("reader out");
  EXPECT_TRUE(service.awaitOutput("lost\n"));
  service.send(SIGINT);
  EXPECT_EQ(service.await(), 0);
  EXPECT_TRUE(mvx2test::holds(service.out(), "lost\nended\n"));
}

}  // namespace
