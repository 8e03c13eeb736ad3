#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

#include <csignal>
#include <regex>

namespace {

using mvx2test::BackgroundTool;
using mvx2test::holds;
using mvx2test::sim;

TEST(Watch, ShowsValuesFirstAndThenEveryChange) {
  BackgroundTool run("watch credit switch --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("switch is 1"));
  sim("set credit 77");
  ASSERT_TRUE(run.awaitOutput("credit 1250 -> 77"));
  run.send(SIGTERM);
  run.await();
  const std::regex stamped("([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}Z  .*\n){3}");
  EXPECT_TRUE(std::regex_match(run.out(), stamped)) << run.out();
}

TEST(Watch, ShowsEachEventAsALineOfJson) {
  BackgroundTool run("watch credit --json --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("\"value\":1250"));
  sim("set credit 77");
  ASSERT_TRUE(run.awaitOutput("\"old\":1250,\"value\":77"));
  sim("reader out");
  ASSERT_TRUE(run.awaitOutput("\"lost\""));
  sim("reader in");
  ASSERT_TRUE(run.awaitOutput("\"back\""));
  run.send(SIGTERM);
  EXPECT_EQ(run.await(), 0);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out()), "");
}

TEST(Watch, LooksAtEveryValueWhenNoneIsNamed) {
  BackgroundTool run("watch --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("listgrp is 1 4"));
  sim("set department 5");
  EXPECT_TRUE(run.awaitOutput("department 12 -> 5"));
}

class WatchSignal : public testing::TestWithParam<int> {};

TEST_P(WatchSignal, EndsItCleanly) {
  BackgroundTool run("watch credit");
  ASSERT_TRUE(run.awaitOutput("credit is 1250"));
  run.send(GetParam());
  EXPECT_EQ(run.await(), 0);
  EXPECT_EQ(run.err(), "");
}

INSTANTIATE_TEST_SUITE_P(Each, WatchSignal, testing::Values(SIGINT, SIGTERM));

TEST(Watch, EndsWhileTheReaderIsGone) {
  BackgroundTool run("watch credit --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("credit is 1250"));
  sim("reader out");
  ASSERT_TRUE(run.awaitOutput("lost: "));
  run.send(SIGINT);
  EXPECT_EQ(run.await(), 0);
}

TEST(Watch, SurvivesAVanishedReader) {
  BackgroundTool run("watch credit --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("credit is 1250"));
  sim("reader out");
  ASSERT_TRUE(run.awaitOutput("lost: no reader of a terminal among: ACS SAM 00 00\n"));
  sim("reader in");
  ASSERT_TRUE(run.awaitOutput("back\n"));
  sim("set credit 5");
  EXPECT_TRUE(run.awaitOutput("credit 1250 -> 5\n"));
}

TEST(Watch, SurvivesARestartedDaemon) {
  BackgroundTool run("watch credit --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("credit is 1250"));
  sim("daemon stop");
  ASSERT_TRUE(run.awaitOutput("lost: no PC/SC daemon (pcscd) answers: SCARD_E_NO_SERVICE (0x8010001D)\n"));
  sim("daemon start");
  ASSERT_TRUE(run.awaitOutput("back\n"));
  sim("set credit 5");
  EXPECT_TRUE(run.awaitOutput("credit 1250 -> 5\n"));
}

TEST(Watch, SurvivesAFailedExchange) {
  BackgroundTool run("watch credit --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("credit is 1250"));
  sim("fault transmit 1");
  ASSERT_TRUE(run.awaitOutput("lost: no answer from the terminal: SCARD_S_SUCCESS (0x00000000)\n"));
  EXPECT_TRUE(run.awaitOutput("back\n"));
}

TEST(Watch, ShowsARefusalAsAChange) {
  BackgroundTool run("watch credit --interval 0.05");
  ASSERT_TRUE(run.awaitOutput("credit is 1250"));
  sim("set state boot");
  ASSERT_TRUE(run.awaitOutput("credit 1250 -> refused: \"ERR unknown\"\n"));
  EXPECT_TRUE(run.awaitOutput("credit refused: \"ERR unknown\" -> 1250\n"));
}

TEST(Watch, FailsWhenThereIsNoTerminalToBeginWith) {
  sim("reader out");
  BackgroundTool run("watch credit");
  EXPECT_EQ(run.await(), 3);
  EXPECT_TRUE(holds(run.err(), "mvx2: no reader of a terminal among: ")) << run.err();
}

}  // namespace
