// The pages show what programs print: the console blocks of a page are run in order on one simulator and
// compared.
#include "run_tool.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

struct Step {
  std::string command;
  std::string output;
};

// Every line behind a "$ " in the console blocks.
std::vector<Step> steps(const std::string& page) {
  std::istringstream text(mvx2test::readFile(page));
  std::vector<Step> found;
  bool isInside = false;
  for (std::string line; std::getline(text, line);) {
    if (line.rfind("```", 0) == 0) {
      isInside = line == "```console";
    } else if (isInside && line.rfind("$ ", 0) == 0) {
      found.push_back({line.substr(2), ""});
    } else if (isInside) {
      found.back().output += line + '\n';
    }
  }
  return found;
}

// The names of the programs stand for those of this build; the examples lie in the directory that is current.
std::string programs() {
  return "cd " + mvx2test::scratch("") +
         "\nmvx2() { $MVX2 \"$@\"; }\nmvx2_sim() { " MVX2_SIM_COMMAND
         " \"$@\"; }\nalias mvx2-sim=mvx2_sim\n"
         "for name in " MVX2_EXAMPLE_NAMES "; do printf '#!/bin/sh\\nexec %s \"$@\"\\n' '" MVX2_EXAMPLE
         "'$name >$name; chmod +x $name; done\n";
}

class Page : public testing::TestWithParam<const char*> {};

TEST_P(Page, ShowsWhatTheProgramsPrint) {
  const std::vector<Step> all = steps(std::string(MVX2_TOP_DIR "/") + GetParam());
  ASSERT_FALSE(all.empty());
  for (const Step& step : all)
    EXPECT_EQ(mvx2test::shell(programs() + step.command + " 2>&1").out, step.output) << step.command;
}

INSTANTIATE_TEST_SUITE_P(Console, Page,
                         testing::Values("README.md", "docs/mvx2.md", "docs/getting-started.md",
                                         "docs/errors.md", "docs/sam.md", "docs/simulator.md",
                                         "docs/board.md", "docs/troubleshooting.md"));

}  // namespace
