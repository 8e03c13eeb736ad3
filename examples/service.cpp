// Tells each change of the credit, for as long as the machine runs: it waits for the terminal, notices when
// it is unplugged or pcscd is restarted, and ends with SIGTERM or SIGINT.
#include <mvx2/MVX2Interfaces.h>

#include <atomic>
#include <csignal>
#include <iostream>
#include <string>

#include <unistd.h>

namespace {

std::atomic<bool> asked_to_end{false};

void handle(int /*signal*/) { asked_to_end = true; }

void handleSignals() {
  struct sigaction action {};
  action.sa_handler = handle;
  // The second signal ends the program at once, should it wait for a reader that another program keeps.
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
}

// Returns when the exchange with the terminal fails, or a signal came.
void serve(velmorin::MVX2Interfaces& terminal) {
  std::string before;
  while (!asked_to_end) {
    const std::string credit = terminal.getCredit_CPtr();
    if (credit.empty() || credit == "No connected") return;
    if (credit != before) std::cout << "credit " << credit << std::endl;
    before = credit;
    usleep(200'000);  // a signal ends it early
  }
}

}  // namespace

int main() {
  handleSignals();
  velmorin::MVX2Interfaces* const terminal = velmorin::MVX2Interfaces::getInstance(-1);
  while (!asked_to_end) {
    // Each attempt that fails takes a second.
    if (!terminal->connect(1, velmorin::CONNECT_DEFAULT)) continue;
    std::cout << "connected" << std::endl;
    serve(*terminal);
    // A failed exchange leaves the reader locked for other programs until its connection is closed.
    terminal->disconnect();
    if (!asked_to_end) std::cout << "lost" << std::endl;
  }
  terminal->releaseInstance();
  std::cout << "ended" << std::endl;
}
