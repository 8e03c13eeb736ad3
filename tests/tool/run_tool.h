// Runs mvx2 as a user does, beside the simulator.
#ifndef MVX2_TESTS_RUN_TOOL_H
#define MVX2_TESTS_RUN_TOOL_H

#include "support/programs.h"

#include <nlohmann/json.hpp>

#include <string>

namespace mvx2test {

struct Outcome : Ended {
  nlohmann::json json() const { return nlohmann::json::parse(out); }
  nlohmann::json error() const { return nlohmann::json::parse(err).at("error"); }
};

// Runs "mvx2 ARGUMENTS" in a shell, with the input on its standard input.
Outcome mvx2(const std::string& arguments, const std::string& input = {});

// Runs a line of a shell in which $MVX2 is the tool.
Outcome shell(const std::string& line, const std::string& input = {});

// What the schema in tools/mvx2/schema says against these lines of JSON, or nothing.
std::string schemaComplaint(const std::string& lines);
std::string backupComplaint(const std::string& file);

// mvx2 in the background.
class BackgroundTool : public Background {
 public:
  explicit BackgroundTool(const std::string& arguments);
};

}  // namespace mvx2test

#endif
