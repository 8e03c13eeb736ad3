// --help and the manual name every command.
#include "run_tool.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::readFile;

// The words of each command, from the completion that the tool makes of its own grammar.
std::set<std::string> commands() {
  const std::string script = mvx2("completion bash").out;
  const std::regex place("\n    \"([a-z ]+)\"\\)");
  std::set<std::string> found;
  for (std::sregex_iterator at(script.begin(), script.end(), place), end; at != end; ++at)
    found.insert((*at)[1]);
  return found;
}

TEST(Help, HasAnExampleForEveryCommand) {
  const std::set<std::string> all = commands();
  ASSERT_GT(all.size(), 35U);
  for (const std::string& command : all) {
    const Outcome run = mvx2(command + " --help");
    EXPECT_EQ(run.exit, 0) << command;
    EXPECT_TRUE(holds(run.out, "\nExample:\n  mvx2 " + command)) << run.out;
  }
}

TEST(Help, NamesTheExitCodes) { EXPECT_TRUE(holds(mvx2("--help").out, "8 interrupted")); }

TEST(Manual, NamesEveryCommand) {
  const std::string manual = readFile(MVX2_TOOL_DIR "/mvx2.1");
  for (const std::string& command : commands()) {
    const std::size_t blank = command.find(' ');
    const std::string group = command.substr(0, blank);
    const std::regex item("\n[.]It Ic " + group + ".*" +
                          (blank == std::string::npos ? "" : command.substr(blank + 1)));
    EXPECT_TRUE(std::regex_search(manual, item)) << command;
  }
}

TEST(Manual, NamesEveryOption) {
  const std::string manual = readFile(MVX2_TOOL_DIR "/mvx2.1");
  const std::string script = mvx2("completion bash").out;
  const std::regex option(" --([a-z-]+)");
  for (std::sregex_iterator at(script.begin(), script.end(), option), end; at != end; ++at) {
    const std::string name = (*at)[1];
    EXPECT_TRUE(holds(manual, "-" + name) || holds(manual, "Fl q , -" + name)) << name;
  }
}

}  // namespace
