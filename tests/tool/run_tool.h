// Runs mvx2 as a user does, beside the simulator.
#ifndef MVX2_TESTS_RUN_TOOL_H
#define MVX2_TESTS_RUN_TOOL_H

#include <nlohmann/json.hpp>

#include <sys/types.h>

#include <functional>
#include <string>

namespace mvx2test {

struct Outcome {
  int exit = -1;
  std::string out = {};
  std::string err = {};

  nlohmann::json json() const { return nlohmann::json::parse(out); }
  nlohmann::json error() const { return nlohmann::json::parse(err).at("error"); }
};

bool holds(const std::string& text, const std::string& part);

// Runs "mvx2 ARGUMENTS" in a shell, with the input on its standard input.
Outcome mvx2(const std::string& arguments, const std::string& input = {});

// Runs a line of a shell in which $MVX2 is the tool.
Outcome shell(const std::string& line, const std::string& input = {});

// A file or directory of this test's own, which is empty at first.
std::string scratch(const std::string& name);
std::string readFile(const std::string& file);
void writeFile(const std::string& file, const std::string& text);

// What the schema in tools/mvx2/schema says against these lines of JSON, or nothing.
std::string schemaComplaint(const std::string& lines);
std::string backupComplaint(const std::string& file);

// mvx2 in the background. It is killed when the test leaves it running.
class Background {
 public:
  explicit Background(const std::string& arguments);
  Background(const Background&) = delete;
  Background(Background&&) = delete;
  Background& operator=(const Background&) = delete;
  Background& operator=(Background&&) = delete;
  ~Background();

  std::string out() const;
  std::string err() const;
  // Waits until the output holds the text; whether it did before the program ended.
  bool awaitOutput(const std::string& text);
  void send(int signal) const;
  // The exit code, or 128 and the signal that ended it.
  int await();

 private:
  bool hasEnded();

  std::string m_directory;
  pid_t m_process = 0;
  int m_status = -1;
};

// Polls until it is so. The test's own time limit ends a wait that is in vain.
void await(const std::function<bool()>& isSo);

}  // namespace mvx2test

#endif
