#include "run_tool.h"

namespace mvx2test {

Outcome shell(const std::string& line, const std::string& input) {
  return {runLines("MVX2='" MVX2_TOOL "'\n" + line, input)};
}

Outcome mvx2(const std::string& arguments, const std::string& input) {
  return shell("exec $MVX2 " + arguments, input);
}

std::string schemaComplaint(const std::string& lines) {
  writeFile(scratch("json"), lines);
  return shell(MVX2_CHECK_SCHEMA " " MVX2_TOOL_DIR "/schema/output-1.json " + scratch("json")).err;
}

std::string backupComplaint(const std::string& file) {
  return shell(MVX2_CHECK_SCHEMA " " MVX2_TOOL_DIR "/schema/backup-1.json " + file + " whole").err;
}

BackgroundTool::BackgroundTool(const std::string& arguments) : Background(MVX2_TOOL " " + arguments) {}

}  // namespace mvx2test
