// Restoring, and how it goes on after it was cut short.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

using mvx2test::BackgroundTool;
using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::readFile;
using mvx2test::scratch;
using mvx2test::sim;

std::string file() { return scratch("terminal.json"); }

// A backup, and a terminal that has changed since.
class Restore : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(mvx2("backup --keys " + file()).exit, 0);
    for (const char* const change :
         {"set account 99", "set pts 200", "set issuer 0x0001", "set madkey 112233445566"})
      sim(change);
  }
};

TEST_F(Restore, BringsBackWhatDiffersAndNothingElse) {
  const Outcome run = mvx2("restore " + file());
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out,
            "NAME     TERMINAL      BACKUP                  RESULT\n"
            "account  99            4711                    restored\n"
            "issuer   0x0001        0x1234                  restored\n"
            "pts      200           10                      restored\n"
            "madkey   ************  ************ (differs)  restored\n");
  EXPECT_EQ(sim("get account") + sim("get issuer") + sim("get pts") + sim("get madkey"),
            "47110x123410A0A1A2A3A4A5");
}

TEST_F(Restore, LeavesNoDifference) {
  mvx2("restore " + file());
  EXPECT_EQ(mvx2("diff " + file()).out, "no difference\n");
  EXPECT_EQ(mvx2("restore " + file()).out, "no difference\n");
}

TEST_F(Restore, SaysInJsonWhatItDid) {
  const Outcome run = mvx2("restore --json " + file());
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["restored"], 4);
  EXPECT_EQ(run.json()["left"], 0);
  EXPECT_EQ(run.json()["changes"][0],
            nlohmann::json::parse(R"({"name":"account","from":99,"to":4711,"result":"restored"})"));
}

TEST_F(Restore, OnlyPlansInADryRun) {
  const Outcome run = mvx2("restore --dry-run " + file());
  EXPECT_EQ(run.exit, 0);
  EXPECT_TRUE(holds(run.out, "account  99            4711                    planned\n")) << run.out;
  EXPECT_EQ(sim("get account"), "99");
}

TEST_F(Restore, SaysInJsonThatItOnlyPlans) {
  const Outcome run = mvx2("restore --dry-run --json " + file());
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["dry_run"], true);
  EXPECT_EQ(run.json()["changes"][0]["result"], "planned");
}

TEST_F(Restore, LeavesTheFileAsItIs) {
  const std::string before = readFile(file());
  mvx2("restore " + file());
  EXPECT_EQ(readFile(file()), before);
}

TEST_F(Restore, ReportsWhatTheTerminalRefusedAndGoesOn) {
  mvx2test::writeFile(file(), R"({"format":"mvx2-backup","schema":1,"settings":{"pincode":10000,"pts":10}})");
  const Outcome run = mvx2("restore " + file());
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(run.out,
            "NAME     TERMINAL  BACKUP  RESULT\n"
            "pincode  1234      10000   refused: \"ERR value\"\n"
            "pts      200       10      restored\n");
  EXPECT_TRUE(holds(run.err, "mvx2: the terminal refused pincode\n")) << run.err;
}

TEST_F(Restore, ReportsARefusalInJson) {
  mvx2test::writeFile(file(), R"({"format":"mvx2-backup","schema":1,"settings":{"pincode":10000}})");
  const Outcome run = mvx2("restore --json " + file());
  EXPECT_EQ(mvx2test::schemaComplaint(run.out + run.err), "");
  EXPECT_EQ(run.json()["refused"], 1);
  EXPECT_EQ(run.json()["changes"][0]["reply"], "ERR value");
}

TEST_F(Restore, ReportsWhatTheTerminalAcceptedAndDidNotKeep) {
  mvx2test::writeFile(
      file(),
      R"({"format":"mvx2-backup","schema":1,"settings":{"pincode":10000,"pts":10},"keys":{"madkey":"A0A1A2A3A4A5"}})");
  sim("set frozen 1");
  const Outcome run = mvx2("restore " + file());
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(run.out,
            "NAME     TERMINAL      BACKUP                  RESULT\n"
            "pincode  1234          10000                   refused: \"ERR value\"\n"
            "pts      200           10                      not kept\n"
            "madkey   ************  ************ (differs)  not kept\n");
  EXPECT_TRUE(holds(run.err, "mvx2: the terminal refused pincode and did not keep pts, madkey\n")) << run.err;
}

TEST_F(Restore, ReportsInJsonWhatTheTerminalDidNotKeep) {
  sim("set frozen 1");
  const Outcome run = mvx2("restore --json " + file());
  EXPECT_EQ(mvx2test::schemaComplaint(run.out + run.err), "");
  EXPECT_EQ(run.json()["not_kept"], 4);
  EXPECT_EQ(run.json()["changes"][0]["result"], "not kept");
}

TEST_F(Restore, WritesThePurseBeforeTheValueInItWhateverTheFilesOrder) {
  mvx2test::writeFile(file(), R"({"format":"mvx2-backup","schema":1,"settings":{"value":1,"purse":2}})");
  const nlohmann::json changes = mvx2("restore --json " + file()).json()["changes"];
  EXPECT_EQ(changes[0]["name"], "purse");
  EXPECT_EQ(changes[1]["name"], "value");
}

// ---- cut short

// Starts a restore that takes its time and waits until it has made its first change.
class CutShort : public Restore {
 protected:
  void SetUp() override {
    Restore::SetUp();
    sim("fault delay 50 1000000");
  }
  static void awaitFirstChange() {
    mvx2test::await([] { return sim("get account") == "4711"; });
  }
  static void expectThatASecondOneCompletes() {
    sim("fault clear");
    EXPECT_EQ(mvx2("restore " + file()).exit, 0);
    EXPECT_EQ(mvx2("diff " + file()).out, "no difference\n");
  }
};

TEST_F(CutShort, SaysHowFarItCameWhenInterrupted) {
  BackgroundTool run("restore " + file());
  awaitFirstChange();
  run.send(SIGINT);
  EXPECT_EQ(run.await(), 8);
  EXPECT_TRUE(holds(run.out(), "account  99            4711                    restored\n")) << run.out();
  EXPECT_TRUE(holds(run.out(), "madkey   ************  ************ (differs)  left\n")) << run.out();
  EXPECT_TRUE(holds(run.err(), "mvx2: interrupted: 1 of 4 changes are made; the next one is issuer\n"))
      << run.err();
  EXPECT_EQ(sim("get issuer"), "0x0001");
  expectThatASecondOneCompletes();
}

TEST_F(CutShort, SaysHowFarItCameInJson) {
  BackgroundTool run("restore --json " + file());
  awaitFirstChange();
  run.send(SIGTERM);
  EXPECT_EQ(run.await(), 8);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out() + run.err()), "");
  EXPECT_EQ(nlohmann::json::parse(run.out())["left"], 3);
  EXPECT_EQ(nlohmann::json::parse(run.err())["error"]["name"], "interrupted");
}

TEST_F(CutShort, SaysHowFarItCameWhenTheTerminalFallsSilent) {
  BackgroundTool run("restore " + file());
  awaitFirstChange();
  sim("reader out");
  EXPECT_EQ(run.await(), 3);
  EXPECT_TRUE(holds(run.err(), " of 4 changes are made; the next one is ")) << run.err();
  EXPECT_TRUE(holds(run.err(), "run the same restore again")) << run.err();
  sim("reader in");
  expectThatASecondOneCompletes();
}

// Killed after so many exchanges with the reader: while it connects, reads, writes and reads back.
class Killed : public CutShort, public testing::WithParamInterface<int> {};

TEST_P(Killed, LeavesFileAndTerminalToASecondRestore) {
  const std::string before = readFile(file());
  const int start = std::stoi(sim("get transmits"));
  BackgroundTool run("restore " + file());
  mvx2test::await([start] { return std::stoi(sim("get transmits")) >= start + GetParam(); });
  run.send(SIGKILL);
  EXPECT_EQ(run.await(), 128 + SIGKILL);
  EXPECT_EQ(readFile(file()), before);
  expectThatASecondOneCompletes();
}

INSTANTIATE_TEST_SUITE_P(AfterExchange, Killed, testing::Values(1, 20, 46, 47, 48, 49, 50, 51, 53, 55));

}  // namespace
