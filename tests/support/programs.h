// Runs programs as a user does, from a shell, beside the simulator.
#ifndef MVX2_TESTS_PROGRAMS_H
#define MVX2_TESTS_PROGRAMS_H

#include <sys/types.h>

#include <functional>
#include <string>

namespace mvx2test {

// What a program left behind.
struct Ended {
  int exit = -1;
  std::string out = {};
  std::string err = {};
};

bool holds(const std::string& text, const std::string& part);

// Runs lines of a shell, with the input on their standard input.
Ended runLines(const std::string& lines, const std::string& input = {});

// A file or directory of this test's own, which is empty at first.
std::string scratch(const std::string& name);
std::string readFile(const std::string& file);
void writeFile(const std::string& file, const std::string& text);

// A program in the background. It is killed when the test leaves it running.
class Background {
 public:
  explicit Background(const std::string& command);
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
