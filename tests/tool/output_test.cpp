// The form of what is shown: tables, colours, --quiet, --verbose.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::scratch;
using mvx2test::shell;
using mvx2test::sim;

TEST(Values, LineUpInATable) {
  const Outcome run = mvx2("values");
  EXPECT_EQ(run.exit, 0);
  std::istringstream lines(run.out);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "NAME        TYPE    RANGE                    ACCESS      MEANING");
  const std::size_t column = line.find("ACCESS");
  for (int count = 0; std::getline(lines, line); ++count) {
    EXPECT_EQ(line.find("read", 45), column) << line;
    EXPECT_NE(line.back(), ' ') << line;
  }
}

TEST(Values, AreListedWithoutATerminal) {
  sim("daemon stop");
  const Outcome run = mvx2("values --json");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
}

TEST(Values, NeverDependOnTheLocale) {
  EXPECT_EQ(shell("LC_ALL=de_DE.UTF-8 $MVX2 get maxval").out, "maxval  100000\n");
}

// `script` gives the tool a screen.
std::string onAScreen(const std::string& settings, const std::string& arguments) {
  return shell(settings + " script -qec \"$MVX2 " + arguments + "\" /dev/null").out;
}

TEST(Colour, IsUsedOnAScreen) { EXPECT_TRUE(holds(onAScreen("", "doctor"), "\x1B[32mok\x1B[0m")); }

TEST(Colour, IsNotUsedWithNoColor) { EXPECT_FALSE(holds(onAScreen("NO_COLOR=1", "doctor"), "\x1B[")); }

TEST(Colour, IsNotUsedInAFile) { EXPECT_FALSE(holds(mvx2("doctor").out, "\x1B[")); }

TEST(Colour, LeavesTheColumnsInLine) {
  EXPECT_TRUE(holds(onAScreen("", "doctor"), "\x1B[32mok\x1B[0m  the daemon answers"));
}

TEST(Quiet, PrintsBareValues) { EXPECT_EQ(mvx2("--quiet get credit issuer").out, "1250\n0x1234\n"); }

TEST(Quiet, ConfirmsNothing) {
  for (const char* const arguments :
       {"set pts 3", "beep", "card read", "purse set 2", "group add", "online", "quit"}) {
    const Outcome run = mvx2(std::string("-q ") + arguments);
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "") << arguments;
  }
}

TEST(Quiet, ShowsNoAttempts) { EXPECT_EQ(mvx2("-q --attempts 3 get credit").err, ""); }

TEST(Quiet, StillShowsErrors) { EXPECT_NE(mvx2("-q set pincode 10000").err, ""); }

TEST(Verbose, ShowsTheLibrarysLogOnStandardError) {
  const Outcome run = mvx2("-v get credit");
  EXPECT_EQ(run.out, "credit  1250\n");
  EXPECT_TRUE(holds(run.err, "USB connexion at ")) << run.err;
}

TEST(Verbose, ShowsWhyAConnectionFailed) {
  sim("daemon stop");
  EXPECT_TRUE(holds(mvx2("-v get credit").err, "USB: SCardEstablishContext (0x8010001d) ["));
}

TEST(Verbose, LosesNothingWhenBothStreamsGoToOneFile) {
  shell("$MVX2 -v get credit > " + scratch("both") + " 2>&1");
  const std::string both = mvx2test::readFile(scratch("both"));
  EXPECT_TRUE(holds(both, "USB connexion at ")) << both;
  EXPECT_TRUE(holds(both, "credit  1250\n")) << both;
}

TEST(StandardOutput, StaysCleanWithTheSam) { EXPECT_FALSE(holds(mvx2("status").out, "connexion")); }

TEST(StandardOutput, ThatIsFullIsAFailure) {
  const Outcome run = shell("$MVX2 values > /dev/full");
  EXPECT_EQ(run.exit, 7);
  EXPECT_EQ(run.err, "mvx2: standard output cannot be written\n");
}

TEST(Version, NamesToolAndLibrary) {
  const Outcome run = mvx2("--version");
  EXPECT_EQ(run.exit, 0);
  EXPECT_TRUE(holds(run.out, "\nlibrary: VELMORIN MVXx DLL V4.0.1.1 ")) << run.out;
}

}  // namespace
