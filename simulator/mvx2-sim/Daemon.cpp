#include "Daemon.h"

#include "Failure.h"
#include "places.h"
#include "readers.h"
#include "sandbox.h"

#include <sys/prctl.h>
#include <sys/wait.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <thread>
#include <utility>

namespace mvx2sim {

namespace {

constexpr auto poll_interval = std::chrono::milliseconds(10);
constexpr int max_polls = 2000;

const char* findProgram() {
  for (const char* path : {"/usr/sbin/pcscd", "/usr/local/sbin/pcscd"})
    if (access(path, X_OK) == 0) return path;
  throw Failure("there is no /usr/sbin/pcscd: install the package pcscd");
}

void directOutput(bool toStandardError) {
  const int log = toStandardError ? dup(STDERR_FILENO)
                                  : open(places::log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  dup2(log, STDOUT_FILENO);
  dup2(log, STDERR_FILENO);
}

std::string readFile(const char* path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

Daemon::Daemon(Settings settings) : m_settings(std::move(settings)), m_program(findProgram()) {
  if (!std::filesystem::is_directory(places::daemon_drivers))
    throw Failure(std::string("there is no directory ") + places::daemon_drivers +
                  " to show the simulated readers in: install the package libccid");
}

void Daemon::start() {
  if (m_process != 0) return;
  // Left behind by a daemon that was killed.
  for (const char* file : {"/pcscd.comm", "/pcscd.pid"})
    unlink((places::daemon_run + std::string(file)).c_str());

  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw systemFailure("cannot start a process");
  if (child == 0) {
    // Of its own session, so that an interrupt from the keyboard does not reach it.
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(exit_failure);
    execute();
  }
  m_process = child;
  waitUntilReady();
}

void Daemon::execute() const {
  try {
    directOutput(m_settings.verbose);
    mountDrivers();
    setenv("LD_PRELOAD", places::usb, 1);
    setenv("MVX2_SIM_DIR", places::home, 1);
    setenv("MVX2_SIM_SAM_KEY", m_settings.samKey.c_str(), 1);
    setenv("MVX2_SIM_SAM_SERIAL", m_settings.samSerial.c_str(), 1);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const char* const apdus = m_settings.verbose ? "--apdu" : nullptr;
    const char* const level = m_settings.verbose ? "--debug" : "--error";
    execl(m_program, m_program, "--foreground", "--config", places::configuration, level, apdus, nullptr);
    throw systemFailure(std::string("cannot execute ") + m_program);
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
  }
  _exit(exit_failure);
}

void Daemon::waitUntilReady() {
  for (int polls = 0; polls < max_polls; ++polls) {
    if (allPluggedReadersReady()) return;
    if (waitpid(m_process, nullptr, WNOHANG) == m_process) {
      m_process = 0;
      throw Failure("the daemon ended at once. Its log:\n" + readFile(places::log));
    }
    std::this_thread::sleep_for(poll_interval);
  }
  stop();
  throw Failure("the daemon does not show its readers. Its log:\n" + readFile(places::log));
}

void Daemon::stop() {
  if (m_process == 0) return;
  kill(m_process, SIGKILL);
  while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) continue;
  m_process = 0;
}

bool Daemon::hasEnded(pid_t child) {
  if (child != m_process) return false;
  m_process = 0;
  return true;
}

}  // namespace mvx2sim
