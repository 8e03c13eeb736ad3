#include "run.h"

#include "../control/lines.h"
#include "Daemon.h"
#include "Failure.h"
#include "places.h"
#include "sandbox.h"

#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <iostream>

namespace mvx2sim {

namespace {

// What the supervisor takes from a descriptor instead of being interrupted by it.
sigset_t watchedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGCHLD, SIGTERM, SIGHUP, SIGINT, SIGQUIT}) sigaddset(&signals, signal);
  return signals;
}

std::string steer(Daemon& daemon, const std::string& verb) try {
  if (verb == "stop" || verb == "restart") daemon.stop();
  if (verb == "start" || verb == "restart") daemon.start();
  return "OK";
} catch (const Failure& failure) {
  return std::string("ERR ") + failure.what();
}

// Becomes the command, which does not outlive the supervisor: without a daemon it could only hang.
[[noreturn]] void execute(const std::vector<std::string>& command, const sigset_t& oldMask,
                          pid_t supervisor) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != supervisor) _exit(exit_failure);
  setenv("MVX2_SIM", "1", 1);
  std::vector<std::string> texts = command;
  std::vector<char*> arguments;
  arguments.reserve(texts.size() + 1);
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  sigprocmask(SIG_SETMASK, &oldMask, nullptr);
  execvp(arguments[0], arguments.data());
  const bool isMissing = errno == ENOENT;
  std::cerr << "mvx2-sim: " << systemFailure("cannot execute " + command.front()).what() << std::endl;
  _exit(isMissing ? exit_not_found : exit_not_executable);
}

class Supervisor {
 public:
  explicit Supervisor(const Settings& settings) : m_settings(settings), m_daemon(settings) {}

  int run() {
    const sigset_t watched = watchedSignals();
    sigset_t oldMask;
    sigprocmask(SIG_BLOCK, &watched, &oldMask);
    const int signals = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
    const int lines = openLineSocket(places::supervisor);
    if (signals < 0 || lines < 0) throw systemFailure("cannot watch over a command");

    m_daemon.start();
    const pid_t supervisor = getpid();
    m_command = fork();
    if (m_command < 0) throw systemFailure("cannot start a process");
    if (m_command == 0) execute(m_settings.command, oldMask, supervisor);
    watch(signals, lines);
    close(lines);
    close(signals);
    return m_status;
  }

 private:
  void watch(int signals, int lines) {
    while (!m_commandEnded) {
      std::array<pollfd, 2> ready{{{signals, POLLIN, 0}, {lines, POLLIN, 0}}};
      if (poll(ready.data(), ready.size(), -1) < 0) continue;
      if (ready[1].revents != 0)
        answerLine(lines, [this](const std::string& line) { return steer(m_daemon, line); });
      if (ready[0].revents != 0) takeSignal(signals);
    }
  }

  void takeSignal(int signals) {
    signalfd_siginfo signal{};
    if (read(signals, &signal, sizeof signal) != sizeof signal) return;
    if (signal.ssi_signo == SIGCHLD) return reapChildren();
    // What the keyboard sends, the command gets by itself.
    if (signal.ssi_code != SI_KERNEL) kill(m_command, static_cast<int>(signal.ssi_signo));
  }

  void reapChildren() {
    int status = 0;
    for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
      if (m_daemon.hasEnded(child)) std::cerr << "mvx2-sim: the daemon has ended by itself" << std::endl;
      if (child != m_command) continue;
      m_commandEnded = true;
      m_status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
  }

  const Settings& m_settings;
  Daemon m_daemon;
  pid_t m_command = 0;
  bool m_commandEnded = false;
  int m_status = 0;
};

}  // namespace

int run(const Settings& settings) {
  enterSandbox();
  furnish(settings);
  return Supervisor(settings).run();
}

}  // namespace mvx2sim
