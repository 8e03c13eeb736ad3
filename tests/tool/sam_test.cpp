#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::scratch;
using mvx2test::sim;

const std::string right_key = "000102030405060708090A0B0C0D0E0F";
const std::string wrong_key = "F00102030405060708090A0B0C0D0E0F";

std::string keyFile(const std::string& key) {
  mvx2test::writeFile(scratch("sam.key"), key);
  return scratch("sam.key");
}

TEST(SamStatus, ShowsReaderAndSerialNumber) {
  const Outcome run = mvx2("sam status");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, "SAM reader  ACS SAM 00 00\nSAM serial  04112233445566\n");
}

TEST(SamStatus, ShowsThemInJson) {
  const Outcome run = mvx2("sam status --json");
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["serial"], "04112233445566");
}

TEST(SamStatus, FailsWithoutReader) {
  sim("reader out sam");
  const Outcome run = mvx2("sam status --json");
  EXPECT_EQ(run.exit, 3);
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_EQ(run.error()["message"], "no reader of a SAM is plugged in");
}

TEST(SamStatus, FailsWithoutDaemon) {
  sim("daemon stop");
  const Outcome run = mvx2("sam status");
  EXPECT_EQ(run.exit, 3);
  EXPECT_TRUE(holds(run.err, "SCARD_E_NO_SERVICE (0x8010001D)")) << run.err;
}

TEST(SamStatus, FailsWithoutAModuleInTheReader) {
  sim("card out sam");
  const Outcome run = mvx2("sam status");
  EXPECT_EQ(run.exit, 4);
  EXPECT_TRUE(holds(run.err, "SCARD_E_NO_SMARTCARD (0x8010000C)")) << run.err;
}

TEST(SamStatus, FailsWhenTheExchangeFails) {
  sim("fault --reader sam transmit 10");
  EXPECT_EQ(mvx2("sam status").exit, 4);
}

TEST(SamStatus, FailsForAModuleOfAnotherSystem) {
  sim("fault --reader sam version");
  const Outcome run = mvx2("sam status");
  EXPECT_EQ(run.exit, 5);
  EXPECT_TRUE(holds(run.err, "version record")) << run.err;
}

TEST(SamUnlock, UnlocksTheModule) {
  const Outcome run = mvx2("sam unlock --key-file " + keyFile(right_key + "\n"));
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, "the SAM in ACS SAM 00 00 is unlocked\n");
  EXPECT_EQ(sim("get --reader sam unlocked"), "1");
}

TEST(SamUnlock, TakesTheKeyFromStandardInput) {
  const Outcome run = mvx2("sam unlock --json --key-file -", right_key);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["unlocked"], true);
}

TEST(SamUnlock, FailsWithAWrongKeyAndDoesNotShowIt) {
  const Outcome run = mvx2("-v sam unlock --key-file " + keyFile(wrong_key));
  EXPECT_EQ(run.exit, 6);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(holds(run.err, "mvx2: the SAM is not unlocked: ")) << run.err;
  EXPECT_FALSE(holds(run.err, wrong_key)) << run.err;
  EXPECT_EQ(sim("get --reader sam unlocked"), "0");
}

TEST(SamUnlock, FailsWithAWrongKeyInJson) {
  const Outcome run = mvx2("sam unlock --json --key-file " + keyFile(wrong_key));
  EXPECT_EQ(run.exit, 6);
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_EQ(run.error()["name"], "sam-failed");
}

TEST(SamUnlock, FailsWhenTheModulesProofIsWrong) {
  sim("fault --reader sam mac");
  const Outcome run = mvx2("sam unlock --key-file " + keyFile(right_key));
  EXPECT_EQ(run.exit, 6);
  EXPECT_TRUE(holds(run.err, "(status -2)")) << run.err;
}

TEST(SamUnlock, FailsWithoutAnswerAsSuch) {
  sim("fault --reader sam transmit 10");
  const Outcome run = mvx2("sam unlock --key-file " + keyFile(right_key));
  EXPECT_EQ(run.exit, 4);
  EXPECT_TRUE(holds(run.err, "SCARD_E_NOT_TRANSACTED (0x80100016)")) << run.err;
}

TEST(SamUnlock, FailsWithAFileThatHoldsNoKey) {
  for (const char* const content :
       {"", "0011", "zz0102030405060708090A0B0C0D0E0F", "000102030405060708090A0B0C0D0E0F10"}) {
    const Outcome run = mvx2("sam unlock --key-file " + keyFile(content));
    EXPECT_EQ(run.exit, 7) << content;
  }
  EXPECT_EQ(sim("get --reader sam transmits"), "0");
}

TEST(SamUnlock, FailsWithoutReader) {
  sim("reader out sam");
  EXPECT_EQ(mvx2("sam unlock --key-file " + keyFile(right_key)).exit, 3);
}

}  // namespace
