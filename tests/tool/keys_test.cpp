// Keys: shown masked, taken from a file or standard input, and never anywhere else.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::scratch;
using mvx2test::sim;

const std::string key = "112233445566";

TEST(KeyGet, MasksTheKey) {
  const Outcome run = mvx2("key get madkey");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, "madkey  ************\n");
}

TEST(KeyGet, MasksTheKeyInJson) {
  const Outcome run = mvx2("key get madkey --json");
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["key"], "************");
  EXPECT_EQ(run.json()["revealed"], false);
}

TEST(KeyGet, ShowsTheKeyWhenAsked) {
  EXPECT_EQ(mvx2("key get madkey --reveal").out, "madkey  A0A1A2A3A4A5\n");
  EXPECT_EQ(mvx2("key get madkey --reveal --json").json()["key"], "A0A1A2A3A4A5");
  EXPECT_EQ(mvx2("key get madkey --reveal --quiet").out, "A0A1A2A3A4A5\n");
}

TEST(KeyGet, FailsWhenTheTerminalRefuses) {
  sim("set bootlines 10");
  sim("set state boot");
  const Outcome run = mvx2("key get madkey --reveal");
  EXPECT_EQ(run.exit, 5);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "  terminal   \"ERR unknown\"\n")) << run.err;
}

class KeySet : public testing::TestWithParam<const char*> {};

TEST_P(KeySet, WritesTheKeyFromStandardInput) {
  const Outcome run = mvx2(std::string("key set ") + GetParam(), key + "\n");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, std::string(GetParam()) + " is now ************ (read back and equal)\n");
  EXPECT_EQ(sim(std::string("get ") + GetParam()), key);
}

INSTANTIATE_TEST_SUITE_P(Each, KeySet, testing::Values("freekey1", "freekey2", "madkey", "ukeya"));

TEST(KeySetFrom, AFile) {
  mvx2test::writeFile(scratch("key"), key);
  const Outcome run = mvx2("key set ukeya --json --file " + scratch("key"));
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["key"], "************");
  EXPECT_EQ(sim("get ukeya"), key);
}

TEST(KeySetFrom, AMissingFileFails) {
  const Outcome run = mvx2("key set ukeya --file /nowhere");
  EXPECT_EQ(run.exit, 7);
  EXPECT_EQ(run.err, "mvx2: cannot read the key from /nowhere: No such file or directory\n");
}

TEST(KeySetFrom, AnEmptyInputFails) {
  EXPECT_EQ(mvx2("key set ukeya", "").exit, 7);
  EXPECT_EQ(sim("get transmits"), "0");
}

TEST(KeySetFrom, TheCommandLineIsNotPossible) {
  const Outcome run = mvx2("key set ukeya " + key);
  EXPECT_EQ(run.exit, 2);
  EXPECT_EQ(sim("get ukeya"), "FFFFFFFFFFFF");
}

TEST(KeySetFrom, AKeyThatIsTooLongForALineFails) {
  const Outcome run = mvx2("key set ukeya", std::string(64, 'A'));
  EXPECT_EQ(run.exit, 2);
  EXPECT_FALSE(holds(run.err, "AAAA")) << run.err;
}

// ---- a key never shows, whatever goes wrong

struct Mishap {
  const char* name;
  const char* fault;
  const char* key;
  int exit;
};

class HiddenKey : public testing::TestWithParam<Mishap> {};

TEST_P(HiddenKey, AppearsNeitherInTheOutputNorInErrorsNorInTheLog) {
  sim(GetParam().fault);
  const Outcome run = mvx2("-v key set madkey", GetParam().key);
  EXPECT_EQ(run.exit, GetParam().exit) << run.err;
  EXPECT_FALSE(holds(run.out + run.err, GetParam().key)) << run.out << run.err;
}

INSTANTIATE_TEST_SUITE_P(Each, HiddenKey,
                         testing::Values(Mishap{"NoMishap", "fault clear", "112233445566", 0},
                                         Mishap{"RefusedKey", "fault clear", "DEADBEEF", 5},
                                         Mishap{"RefusedText", "fault clear", "sesame-open-now", 5},
                                         Mishap{"NoAnswer", "fault transmit 100", "112233445566", 4},
                                         Mishap{"NoAnswerToTheReadingBack", "fault transmit 100 after 4",
                                                "112233445566", 4},
                                         Mishap{"NoReader", "reader out", "112233445566", 3}),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
