// Tells when a card is laid on the terminal and when it is taken away, four times a second, until Ctrl-C.
#include <mvx2/MVX2Interfaces.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

namespace {

// getSwitch() is false after a failed exchange too. The text tells: it is empty then, or "No connected".
std::string look(velmorin::MVX2Interfaces& terminal) {
  const std::string answer = terminal.getSwitch_CPtr();
  if (answer == "1") return std::string("card ") + terminal.getCardId_CPtr();
  return answer == "0" ? "no card" : "no terminal";
}

}  // namespace

int main() {
  velmorin::MVX2Interfaces* const terminal = velmorin::MVX2Interfaces::getInstance(-1);
  for (std::string before;; std::this_thread::sleep_for(std::chrono::milliseconds(250))) {
    const std::string now = look(*terminal);
    if (now != before) std::cout << now << std::endl;
    before = now;
    // One attempt. One that fails takes a second by itself.
    if (now == "no terminal") terminal->reconnect(1);
  }
}
