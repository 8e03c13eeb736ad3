// The two commands that look at everything.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::sim;

TEST(Status, ShowsTerminalAndSam) {
  const Outcome run = mvx2("status");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            "Reader         KRV MVX3 Terminal 00 00\n"
            "Mode           command\n"
            "Boot loader    BOOT SIM V1.0\n"
            "Firmware       MVX3 SIM V1.0\n"
            "Serial number  30457\n"
            "Card on it     yes\n"
            "SAM reader     ACS SAM 00 00\n"
            "SAM serial     04112233445566\n");
}

TEST(Status, ShowsThemInJson) {
  const Outcome run = mvx2("status --json");
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json(), nlohmann::json::parse(
                            R"({"schema":1,"command":"status","reader":"KRV MVX3 Terminal 00 00",)"
                            R"("mode":"command","boot_version":"BOOT SIM V1.0","version":"MVX3 SIM V1.0",)"
                            R"("serial":30457,"card":true,)"
                            R"("sam":{"reader":"ACS SAM 00 00","serial":"04112233445566"}})"));
}

TEST(Status, TellsThatNoCardLiesOnTheTerminal) {
  sim("set switch 0");
  EXPECT_TRUE(holds(mvx2("status").out, "Card on it     no\n"));
  EXPECT_EQ(mvx2("status --json").json()["card"], false);
}

TEST(Status, ShowsTheOnLineMode) {
  sim("set state online");
  EXPECT_TRUE(holds(mvx2("status").out, "Mode           on-line\n"));
}

TEST(Status, AsksTheBootLoaderOnlyForItsVersion) {
  sim("set state boot");
  const Outcome run = mvx2("status");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out.rfind("Reader       KRV MVX3 Terminal 00 00\nMode         boot loader\n"
                          "Boot loader  BOOT SIM V1.0\nSAM reader ",
                          0),
            0U)
      << run.out;
}

TEST(Status, HasNullsForWhatTheBootLoaderDoesNotKnow) {
  sim("set state boot");
  const Outcome run = mvx2("status --json");
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_TRUE(run.json()["version"].is_null());
  EXPECT_TRUE(run.json()["card"].is_null());
}

TEST(Status, IsCompleteWithoutSam) {
  sim("reader out sam");
  const Outcome run = mvx2("status --json");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_TRUE(run.json()["sam"].is_null());
}

TEST(Status, ShowsWhatIsWrongWithTheSam) {
  sim("card out sam");
  const Outcome run = mvx2("status --json");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["sam"]["problem"], "the SAM in its reader cannot be connected");
}

// ---- doctor

TEST(Doctor, FindsNothingWrongWithAHealthySystem) {
  const Outcome run = mvx2("doctor");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out,
            "pcscd        ok  the daemon answers\n"
            "permissions  ok  this user may use the daemon\n"
            "readers      ok  ACS SAM 00 00 = SAM; KRV MVX3 Terminal 00 00 = terminal (mvx3)\n"
            "candidates   ok  one terminal\n"
            "connection   ok  connected to KRV MVX3 Terminal 00 00\n"
            "answer       ok  in command mode\n"
            "SAM          ok  serial 04112233445566 in ACS SAM 00 00\n");
}

struct Illness {
  const char* name;
  const char* cause;
  const char* check;   // that fails
  const char* result;  // "failed" or "warning"
  int exit;
  const char* mend;
};

std::ostream& operator<<(std::ostream& stream, const Illness& illness) { return stream << illness.name; }

class Ill : public testing::TestWithParam<Illness> {
 protected:
  void SetUp() override { sim(GetParam().cause); }
};

TEST_P(Ill, SystemIsDiagnosed) {
  const Outcome run = mvx2("doctor --json");
  EXPECT_EQ(run.exit, GetParam().exit);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out + run.err), "");
  const nlohmann::json result = run.json();
  EXPECT_EQ(result["healthy"], GetParam().exit == 0);
  for (const auto& check : result["checks"]) {
    if (check["name"] != GetParam().check) continue;
    EXPECT_EQ(check["result"], GetParam().result);
    EXPECT_EQ(check["mend"], GetParam().mend);
    return;
  }
  ADD_FAILURE() << run.out;
}

TEST_P(Ill, SystemIsToldHowToMendIt) {
  const Outcome run = mvx2("doctor");
  EXPECT_EQ(run.exit, GetParam().exit);
  EXPECT_TRUE(holds(run.out, std::string("mend: ") + GetParam().mend + "\n")) << run.out;
}

INSTANTIATE_TEST_SUITE_P(
    Each, Ill,
    testing::Values(Illness{"NoDaemon", "daemon stop", "pcscd", "failed", 3,
                            "sudo systemctl restart pcscd.socket pcscd.service"},
                    Illness{"NoTerminal", "reader out", "readers", "failed", 3, "lsusb"},
                    Illness{"TerminalOff", "card out", "connection", "failed", 4,
                            "switch the terminal on, then mvx2 --attempts 10 status"},
                    Illness{"SilentTerminal", "fault transmit 100", "answer", "failed", 4,
                            "mvx2 --attempts 10 status, after a restart of the terminal"},
                    Illness{"NoSam", "reader out sam", "SAM", "warning", 0, "lsusb, if there should be one"},
                    Illness{"SilentSam", "fault --reader sam transmit 100", "SAM", "failed", 4,
                            "take the SAM out and put it back, then mvx2 sam status"}),
    [](const auto& instance) { return instance.param.name; });

TEST(Doctor, WarnsOfMoreThanOneTerminal) {
  // A second simulator, whose SAM's reader carries the name of another terminal.
  const Outcome run = mvx2test::shell(MVX2_SIM_COMMAND " run --sam-name 'Velmorin other' -- $MVX2 doctor");
  EXPECT_EQ(run.exit, 0);
  EXPECT_TRUE(holds(run.out, "candidates   warning  2 terminals; the one taken is ")) << run.out;
  EXPECT_TRUE(holds(run.out, "mend: mvx2 --reader ")) << run.out;
}

TEST(Doctor, SaysThatTheOtherKindOfTerminalIsThere) {
  const Outcome run = mvx2("--reader other doctor");
  EXPECT_EQ(run.exit, 3);
  EXPECT_TRUE(holds(run.out, "mend: mvx2 --reader any doctor\n")) << run.out;
}

TEST(Doctor, TellsAUserWhoMayNotReachTheDaemon) {
  // Root may write everywhere: the check is made as somebody else.
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  const std::string somebodyElse = "setpriv --reuid 65534 --clear-groups ";
  if (mvx2test::shell(somebodyElse + "$MVX2 --version").exit != 0)
    GTEST_SKIP() << "nobody else may run the tool where it lies";
  mvx2test::shell("chmod 600 /run/pcscd/pcscd.comm; chmod 755 " + mvx2test::scratch(""));
  const Outcome run = mvx2test::shell("exec " + somebodyElse + "$MVX2 doctor");
  EXPECT_EQ(run.exit, 3);
  EXPECT_TRUE(holds(run.out, "permissions  failed   this user may not write to /run/pcscd/pcscd.comm\n"))
      << run.out;
}

}  // namespace
