// The pages show what the tool prints: their console blocks are run in order on one simulator and compared.
#include "run_tool.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

struct Step {
  std::string command;
  std::string output;
};

// Every line behind a "$ " in the console blocks that begin with a run of mvx2.
std::vector<Step> steps(const std::string& page) {
  std::istringstream text(mvx2test::readFile(page));
  std::vector<Step> found;
  bool begins = false;
  bool isOurs = false;
  for (std::string line; std::getline(text, line);) {
    if (line.rfind("```", 0) == 0) {
      begins = line == "```console";
      isOurs = false;
      continue;
    }
    if (begins) isOurs = line.rfind("$ mvx2", 0) == 0;
    begins = false;
    if (!isOurs) continue;
    if (line.rfind("$ ", 0) == 0) {
      found.push_back({line.substr(2), ""});
    } else {
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

void expectThatTheToolPrintsIt(const std::vector<Step>& all) {
  for (const Step& step : all)
    EXPECT_EQ(mvx2test::shell(functions() + step.command + " 2>&1").out, step.output) << step.command;
}

TEST(Guide, ShowsWhatTheToolPrints) {
  const std::vector<Step> all = steps(MVX2_TOP_DIR "/docs/mvx2.md");
  ASSERT_GT(all.size(), 10U);
  expectThatTheToolPrintsIt(all);
}

TEST(Readme, ShowsWhatTheToolPrints) { expectThatTheToolPrintsIt(steps(MVX2_TOP_DIR "/README.md")); }

}  // namespace
