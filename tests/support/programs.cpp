#include "support/programs.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace mvx2test {

namespace {

namespace fs = std::filesystem;

// One directory for each test program, that is for each test; it goes when the program ends.
class Scratch {
 public:
  Scratch() : m_path(fs::temp_directory_path() / ("mvx2-test-" + std::to_string(getpid()))) {
    fs::create_directories(m_path);
  }
  Scratch(const Scratch&) = delete;
  Scratch(Scratch&&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  Scratch& operator=(Scratch&&) = delete;
  ~Scratch() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  std::string file(const std::string& name) const { return (m_path / name).string(); }

 private:
  fs::path m_path;
};

int exitCode(int status) { return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status); }

}  // namespace

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string scratch(const std::string& name) {
  static const Scratch directory;
  return directory.file(name);
}

std::string readFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

void writeFile(const std::string& file, const std::string& text) { std::ofstream(file) << text; }

Ended runLines(const std::string& lines, const std::string& input) {
  writeFile(scratch("in"), input);
  writeFile(scratch("lines"), lines + '\n');
  const std::string command =
      "sh " + scratch("lines") + " <" + scratch("in") + " >" + scratch("out") + " 2>" + scratch("err");
  const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): the lines are those of a shell
  return {exitCode(status), readFile(scratch("out")), readFile(scratch("err"))};
}

Background::Background(const std::string& command) : m_directory(scratch("background")) {
  fs::create_directories(m_directory);
  const std::string line = "exec " + command + " >" + m_directory + "/out 2>" + m_directory + "/err";
  // fork() does not work in every emulator.
  std::string words[] = {"sh", "-c", line};
  char* const argv[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  if (posix_spawn(&m_process, "/bin/sh", nullptr, nullptr, argv, environ) != 0)
    throw std::runtime_error(command + " cannot be started");
}

Background::~Background() {
  if (!hasEnded()) {
    send(SIGKILL);
    await();
  }
}

std::string Background::out() const { return readFile(m_directory + "/out"); }

std::string Background::err() const { return readFile(m_directory + "/err"); }

bool Background::hasEnded() {
  if (m_status >= 0) return true;
  int status = 0;
  if (waitpid(m_process, &status, WNOHANG) != m_process) return false;
  m_status = exitCode(status);
  return true;
}

bool Background::awaitOutput(const std::string& text) {
  const auto isThere = [this, &text] { return holds(out(), text); };
  mvx2test::await([&] { return isThere() || hasEnded(); });
  return isThere();
}

void Background::send(int signal) const { kill(m_process, signal); }

int Background::await() {
  mvx2test::await([this] { return hasEnded(); });
  return m_status;
}

void await(const std::function<bool()>& isSo) {
  while (!isSo()) usleep(10000);
}

}  // namespace mvx2test
