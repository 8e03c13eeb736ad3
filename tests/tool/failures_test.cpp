// What a user is told when something is wrong: exit code, message, and never a value.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::scratch;
using mvx2test::sim;

// ---- every command that talks to the terminal

class TerminalCommand : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    mvx2test::writeFile(scratch("key"), "112233445566\n");
    mvx2test::writeFile(scratch("backup"),
                        R"({"format":"mvx2-backup","schema":1,"version":"","settings":{"pts":11}})");
  }

  // The file names in the arguments are this test's own.
  static std::string arguments() {
    std::string text = GetParam();
    const std::size_t at = text.find('@');
    return at == std::string::npos ? text : text.replace(at, 1, scratch(""));
  }
};

TEST_P(TerminalCommand, FailsWithoutTheReader) {
  sim("reader out");
  const Outcome run = mvx2(arguments());
  EXPECT_EQ(run.exit, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "mvx2: no reader of a terminal among: ACS SAM 00 00\n"
            "  operation  connect\n"
            "  hint       plug the terminal in; mvx2 doctor shows each reader's role\n");
}

TEST_P(TerminalCommand, FailsInJsonWithoutTheDaemon) {
  sim("daemon stop");
  const Outcome run = mvx2(arguments() + " --json");
  EXPECT_EQ(run.exit, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_EQ(run.error()["status"]["name"], "SCARD_E_NO_SERVICE");
  EXPECT_EQ(run.error()["hint"], "sudo systemctl start pcscd.socket");
}

TEST_P(TerminalCommand, FailsWhenItsExchangeFails) {
  sim("fault transmit 100");
  const Outcome run = mvx2(arguments());
  EXPECT_EQ(run.exit, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "mvx2: no answer from the terminal\n")) << run.err;
  EXPECT_TRUE(holds(run.err, "  reader     KRV MVX3 Terminal 00 00\n")) << run.err;
  EXPECT_TRUE(holds(run.err, "  status     SCARD_E_NOT_TRANSACTED (0x80100016)\n")) << run.err;
  EXPECT_TRUE(holds(run.err, "  hint       check the cable")) << run.err;
}

TEST_P(TerminalCommand, FailsInJsonWhenItsExchangeFails) {
  sim("fault transmit 100");
  const Outcome run = mvx2(arguments() + " --json");
  EXPECT_EQ(run.exit, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  const nlohmann::json error = run.error();
  EXPECT_EQ(error["code"], 4);
  EXPECT_EQ(error["name"], "no-answer");
  EXPECT_EQ(error["reader"], "KRV MVX3 Terminal 00 00");
  EXPECT_EQ(error["status"], (nlohmann::json{{"name", "SCARD_E_NOT_TRANSACTED"}, {"code", "0x80100016"}}));
}

INSTANTIATE_TEST_SUITE_P(Each, TerminalCommand,
                         testing::Values("status", "get credit", "get --all", "set pts 9", "card read",
                                         "card fread", "card write", "card persoread", "card persocreate",
                                         "purse list", "purse set 2", "purse change 2", "purse delete 2",
                                         "group list", "group add", "group delete 4", "sectors get",
                                         "sectors set 3", "key get madkey", "key set madkey --file @key",
                                         "beep", "reboot", "quit", "online", "send version",
                                         "send --raw 'trs\\r'", "apdu FFCA000000", "backup @new",
                                         "diff @backup", "restore @backup"));

// ---- an exchange that goes wrong in another way

class Fault : public testing::TestWithParam<const char*> {};

// The first two exchanges with the reader belong to the connection.
TEST_P(Fault, NeverLooksLikeAValue) {
  sim(std::string("fault ") + GetParam());
  const Outcome run = mvx2("get credit");
  EXPECT_EQ(run.exit, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "  operation  credit\n")) << run.err;
}

INSTANTIATE_TEST_SUITE_P(Each, Fault,
                         testing::Values("transmit 1 after 2", "transmit 1 after 3", "first 90 1 after 2",
                                         "truncate 1 1 after 2", "truncate 0 1 after 2",
                                         "truncate 0 1 after 3", "truncate 9 1 after 3",
                                         "truncate 13 1 after 3", "extend 80 1 after 3"));

TEST(FaultHint, SaysThatTheTerminalAnswersAgainAfterOneFault) {
  sim("fault transmit 1 after 2");
  EXPECT_TRUE(holds(mvx2("get credit").err, "hint       the terminal answers again: repeat the command\n"));
}

TEST(FaultHint, TellsAReaderThatIsNoneOfATerminal) {
  sim("fault first 90 100 after 2");
  EXPECT_TRUE(holds(mvx2("get credit").err, "the reader answered 90"));
}

TEST(FaultHint, LeavesTheReaderToOthersAfterwards) {
  sim("fault transmit 1 after 2");
  mvx2("get credit");
  EXPECT_EQ(mvx2("get credit").out, "credit  1250\n");
}

// ---- the terminal refuses

struct Refusal {
  const char* name;
  const char* preparation;
  const char* arguments;
  const char* reply;
};

std::ostream& operator<<(std::ostream& stream, const Refusal& refusal) { return stream << refusal.arguments; }

class Refused : public testing::TestWithParam<Refusal> {
 protected:
  void SetUp() override { sim(GetParam().preparation); }
};

TEST_P(Refused, ShowsTheTerminalsOwnText) {
  const Outcome run = mvx2(GetParam().arguments);
  EXPECT_EQ(run.exit, 5);
  EXPECT_TRUE(holds(run.err, std::string("  terminal   \"") + GetParam().reply + "\"\n")) << run.err;
}

TEST_P(Refused, ShowsTheTerminalsOwnTextInJson) {
  const Outcome run = mvx2(std::string(GetParam().arguments) + " --json");
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_EQ(run.error()["name"], "refused");
  EXPECT_EQ(run.error()["reply"], GetParam().reply);
}

TEST(Frozen, IsNoSuccessWhenAValueIsSet) {
  sim("set frozen 1");
  const Outcome run = mvx2("set pts 200");
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "mvx2: the terminal did not keep pts: it answered \"200\" and holds 10\n"))
      << run.err;
}

TEST(Frozen, IsNoSuccessWhenAKeyIsSet) {
  sim("set frozen 1");
  const Outcome run = mvx2("key set madkey", "112233445566\n");
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "mvx2: the terminal did not keep madkey\n")) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Each, Refused,
    testing::Values(Refusal{"ValueOutOfItsRange", "get state", "set pincode 10000", "ERR value"},
                    Refusal{"SectorOutOfItsRange", "get state", "set usector 40", "ERR value"},
                    Refusal{"ActionWithoutCard", "set switch 0", "card write", "ERR card"},
                    Refusal{"GroupWithoutCard", "set switch 0", "group add", "ERR card"},
                    Refusal{"MissingPurse", "get state", "purse delete 9", "ERR value"},
                    Refusal{"ImpossiblePurse", "get state", "purse change 0", "ERR value"},
                    Refusal{"MissingGroup", "get state", "group delete 9", "ERR value"},
                    Refusal{"ValueInTheBootLoader", "set state boot", "get credit", "ERR unknown"},
                    Refusal{"OnlineInTheBootLoader", "set state boot", "online", "ERR unknown"},
                    Refusal{"BeepInTheBootLoader", "set state boot", "beep", "ERR unknown"},
                    Refusal{"RebootInTheBootLoader", "set state boot", "reboot", "ERR unknown"}),
    [](const auto& instance) { return instance.param.name; });

TEST(RefusedValue, LeavesTheOthersInTheResult) {
  sim("set state boot");
  sim("set bootlines 2");  // the connection's empty command, and the first value
  const Outcome run = mvx2("get credit debit");
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(run.out, "credit  refused: \"ERR unknown\"\ndebit   480\n");
}

TEST(RefusedValue, IsNullInJson) {
  sim("set state boot");
  sim("set bootlines 2");
  const Outcome run = mvx2("get credit debit --json");
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["values"][0],
            (nlohmann::json{{"name", "credit"}, {"value", nullptr}, {"refused", "ERR unknown"}}));
  EXPECT_EQ(run.json()["values"][1]["value"], 480);
}

TEST(RefusedValue, SaysHowToLeaveTheBootLoader) {
  sim("set state boot");
  EXPECT_TRUE(holds(mvx2("get credit").err, "hint       it is in its boot loader mode: mvx2 quit\n"));
}

TEST(RefusedValue, EndsABackupWithoutAFile) {
  sim("set state boot");
  sim("set bootlines 100");
  EXPECT_EQ(mvx2("backup " + scratch("new.json")).exit, 5);
  EXPECT_EQ(mvx2test::readFile(scratch("new.json")), "");
}

// ---- usage: nothing is sent

class Misuse : public testing::TestWithParam<const char*> {};

TEST_P(Misuse, IsRefusedBeforeAnythingIsSent) {
  const Outcome run = mvx2(GetParam());
  EXPECT_EQ(run.exit, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "mvx2: ")) << run.err;
  EXPECT_EQ(sim("get transmits"), "0");
}

TEST_P(Misuse, IsRefusedInJson) {
  const Outcome run = mvx2(std::string("--json ") + GetParam());
  EXPECT_EQ(run.exit, 2);
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_EQ(run.error()["name"], "usage");
}

INSTANTIATE_TEST_SUITE_P(
    Each, Misuse,
    testing::Values("", "nonsense", "card", "card eat", "get", "get nothing", "get credit --all",
                    "set credit 5", "set listgrp 5", "set pincode", "set pincode 65536", "set pincode -1",
                    "set pincode 0x10000", "set pincode 12x", "set pincode ''", "set value 2147483648",
                    "set addval 2", "set nothing 1", "purse set x", "purse set -1", "beep 2147483648",
                    "apdu 0", "apdu XY", "apdu ''", "explain nonsense", "explain 12345",
                    "--reader mvx2 status", "--attempts 0 status", "watch --interval 0",
                    "watch --interval nan", "watch nothing", "key get nokey", "key set nokey",
                    "completion fish", "send --raw 'a\\q'", "sam unlock", "backup",
                    "send 0123456789012345678901234567890123456789012345678901234567890123456789",
                    "apdu 00112233445566778899AABBCCDDEEFF00112233445566778899AABBCCDDEEFF"
                    "00112233445566778899AABBCCDDEEFF00112233445566778899AABBCCDDEEFF00"));

TEST(Usage, NamesTheRangeOfAValue) {
  EXPECT_EQ(mvx2("set pincode 65536").err,
            "mvx2: 65536 is outside the range of pincode\n  hint  uint16: 0..65535\n");
}

TEST(Usage, OffersValuesOfASimilarName) {
  EXPECT_EQ(mvx2("get credits").err,
            "mvx2: no value is named credits\n  hint  did you mean credit or ccredit?\n");
}

// ---- the choice of the reader

TEST(Reader, OfTheOtherKindIsNotTaken) {
  const Outcome run = mvx2("--reader other get credit");
  EXPECT_EQ(run.exit, 3);
  EXPECT_TRUE(holds(run.err, "mvx2: no reader of an other terminal among: ")) << run.err;
  EXPECT_TRUE(holds(run.err, "leave --reader out")) << run.err;
}

TEST(Reader, OfTheKindAskedForIsTaken) { EXPECT_EQ(mvx2("--reader mvx3 get credit").out, "credit  1250\n"); }

TEST(Reader, WithoutCardCannotBeConnected) {
  sim("card out");
  const Outcome run = mvx2("get credit");
  EXPECT_EQ(run.exit, 4);
  EXPECT_TRUE(holds(run.err, "mvx2: the terminal's reader cannot be connected\n")) << run.err;
  EXPECT_TRUE(holds(run.err, "SCARD_E_NO_SMARTCARD (0x8010000C)\n")) << run.err;
}

TEST(Attempts, AreShownOneByOne) {
  sim("reader out");
  const Outcome run = mvx2("--attempts 2 get credit");
  EXPECT_EQ(run.exit, 3);
  EXPECT_EQ(run.err.rfind("Attempt 1 of 2\nAttempt 2 of 2\nmvx2: ", 0), 0U) << run.err;
}

TEST(Attempts, AreShownInJson) {
  sim("reader out");
  const Outcome run = mvx2("--attempts 2 get credit --json");
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_TRUE(holds(run.err, R"("event":"attempt","attempt":2,"of":2)")) << run.err;
}

TEST(Attempts, EndWithTheFirstThatSucceeds) {
  const Outcome run = mvx2("--attempts 5 get credit");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.err, "Attempt 1 of 5\n");
}

// ---- interruption

TEST(Interruption, EndsACommandThatWaits) {
  sim("fault delay 60000 1");
  mvx2test::BackgroundTool run("get credit");
  mvx2test::await([] { return sim("get transmits") != "0"; });
  run.send(SIGTERM);
  EXPECT_EQ(run.await(), 8);
  EXPECT_EQ(run.out(), "");
}

}  // namespace
