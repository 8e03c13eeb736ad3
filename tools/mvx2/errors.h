// What can go wrong, and the exit code that says so.
#ifndef MVX2TOOL_ERRORS_H
#define MVX2TOOL_ERRORS_H

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

namespace mvx2tool {

// The exit codes are promised to scripts: none is ever given another meaning.
enum class Exit : int {
  done = 0,
  usage = 2,
  noReader = 3,     // no reader that fits, or no PC/SC daemon
  noAnswer = 4,     // the terminal or the SAM did not answer
  refused = 5,      // the terminal answered, but not with a value
  samFailed = 6,    // the SAM's authentication failed
  file = 7,         // a file cannot be read, written or understood
  interrupted = 8,  // by SIGINT or SIGTERM
};

// The code's name in JSON, for example "no-answer".
const char* nameOf(Exit exit);

// A failure as the user is told of it. What does not apply stays empty. No field ever holds a secret.
struct Problem {
  Exit exit = Exit::usage;
  std::string message = {};
  std::string operation = {};                // what was being done, for example the command word
  std::string reader = {};                   // the reader's name
  std::optional<std::uint32_t> status = {};  // of PC/SC
  std::optional<std::string> reply = {};     // what the terminal said instead
  std::string hint = {};
};

class Failure : public std::exception {
 public:
  explicit Failure(Problem problem) : m_problem(std::move(problem)) {}
  const Problem& problem() const { return m_problem; }
  const char* what() const noexcept override { return m_problem.message.c_str(); }

 private:
  Problem m_problem;
};

[[noreturn]] void failUsage(const std::string& message, const std::string& hint = {});
[[noreturn]] void failFile(const std::string& message, const std::string& hint = {});

}  // namespace mvx2tool

#endif
