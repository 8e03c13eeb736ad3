#include "run_tool.h"

#include <gtest/gtest.h>

namespace {

using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::scratch;
using mvx2test::shell;

// What bash offers for the last of these words.
std::string offered(const std::string& words) {
  mvx2test::writeFile(scratch("completion"), mvx2("completion bash").out);
  return shell("bash -c '. " + scratch("completion") + "; COMP_WORDS=(mvx2 " + words +
               "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _mvx2; echo \"${COMPREPLY[*]}\"'")
      .out;
}

TEST(BashCompletion, OffersCommands) { EXPECT_EQ(offered("s"), "status set sectors send sam\n"); }

TEST(BashCompletion, OffersTheCommandsOfAGroup) { EXPECT_EQ(offered("purse d"), "delete\n"); }

TEST(BashCompletion, OffersNamesOfValues) { EXPECT_EQ(offered("get cr"), "credit\n"); }

TEST(BashCompletion, OffersOnlyWritableValuesToSet) { EXPECT_EQ(offered("set c"), "category\n"); }

TEST(BashCompletion, OffersKeys) { EXPECT_EQ(offered("key set free"), "freekey1 freekey2\n"); }

TEST(BashCompletion, OffersOptionsOfTheCommandAndOfAll) { EXPECT_EQ(offered("restore --d"), "--dry-run\n"); }

TEST(BashCompletion, SkipsOptionsBeforeTheCommand) { EXPECT_EQ(offered("--json get deb"), "debit\n"); }

TEST(BashCompletion, OffersTheKindsOfReaders) { EXPECT_EQ(offered("--reader m"), "mvx3\n"); }

TEST(ZshCompletion, IsAScriptThatZshUnderstands) {
  const Outcome run = mvx2("completion zsh");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out.rfind("#compdef mvx2\n", 0), 0U);
  mvx2test::writeFile(scratch("completion"), run.out);
  if (shell("command -v zsh").exit != 0) GTEST_SKIP() << "no zsh on this machine";
  EXPECT_EQ(shell("zsh -n " + scratch("completion")).err, "");
}

TEST(ZshCompletion, OffersWhatFitsTheWordsBefore) {
  if (shell("command -v zsh").exit != 0) GTEST_SKIP() << "no zsh on this machine";
  mvx2test::writeFile(scratch("completion"), mvx2("completion zsh").out);
  // compadd, which works in the line editor alone, is taken by a function that prints.
  const Outcome run = shell("zsh -fc 'compdef() { : }; compadd() { print -- ${@:2} }; . " +
                            scratch("completion") + "; words=(mvx2 purse \"\"); CURRENT=3; _mvx2'");
  EXPECT_EQ(run.out.rfind("set change delete list --help", 0), 0U) << run.out << run.err;
}

}  // namespace
