// The guide shows what the tool prints: its console blocks are run in order on one simulator and compared.
#include "run_tool.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

struct Step {
  std::string command;
  std::string output;
};

std::vector<Step> steps() {
  std::istringstream guide(mvx2test::readFile(MVX2_GUIDE));
  std::vector<Step> found;
  bool inConsole = false;
  for (std::string line; std::getline(guide, line);) {
    if (line.rfind("```", 0) == 0) {
      inConsole = line == "```console";
    } else if (inConsole && line.rfind("$ ", 0) == 0) {
      found.push_back({line.substr(2), ""});
    } else if (inConsole && !found.empty()) {
      found.back().output += line + '\n';
    }
  }
  return found;
}

// The names of the programs stand for those of this build.
std::string functions() {
  return "cd " + mvx2test::scratch("") +
         "\nmvx2() { $MVX2 \"$@\"; }\nmvx2_sim() { " MVX2_SIM_COMMAND " \"$@\"; }\nalias mvx2-sim=mvx2_sim\n";
}

TEST(Guide, ShowsWhatTheToolPrints) {
  const std::vector<Step> all = steps();
  ASSERT_GT(all.size(), 10U);
  for (const Step& step : all)
    EXPECT_EQ(mvx2test::shell(functions() + step.command + " 2>&1").out, step.output) << step.command;
}

}  // namespace
