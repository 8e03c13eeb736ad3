#include "interrupt.h"

#include "errors.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace mvx2tool::interrupt {

namespace {

std::atomic<bool> requested_flag{false};
std::atomic<bool> noted_only{false};
int pipe_ends[2] = {-1, -1};  // the handler's end wakes wait()

void handle(int /*signal*/) {
  if (!noted_only || requested_flag.exchange(true)) {
    static const char message[] = "mvx2: interrupted\n";
    static_cast<void>(!write(STDERR_FILENO, message, sizeof message - 1));
    _exit(static_cast<int>(Exit::interrupted));
  }
  static_cast<void>(!write(pipe_ends[1], "", 1));
}

}  // namespace

void exitAtOnce() {
  struct sigaction action {};
  action.sa_handler = handle;
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void note() {
  if (pipe2(pipe_ends, O_CLOEXEC | O_NONBLOCK) == 0) noted_only = true;
}

bool requested() { return requested_flag; }

bool wait(std::chrono::milliseconds time) {
  pollfd woken{pipe_ends[0], POLLIN, 0};
  if (!requested()) poll(&woken, 1, static_cast<int>(time.count()));
  return requested();
}

}  // namespace mvx2tool::interrupt
