// Two threads that read one terminal, through a class that lets in one at a time.
#include <mvx2/MVX2Interfaces.h>

#include <iostream>
#include <mutex>
#include <string>
#include <thread>

namespace {

// The terminal for a program with several threads: each call is whole, and each text a copy.
class LockedTerminal {
 public:
  bool connect() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_terminal->connect(1, velmorin::CONNECT_DEFAULT);
  }
  std::string credit() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_terminal->getCredit_CPtr();
  }

 private:
  std::mutex m_mutex;
  velmorin::MVX2Interfaces* m_terminal = velmorin::MVX2Interfaces::getInstance(-1);
};

}  // namespace

int main() {
  LockedTerminal terminal;
  if (!terminal.connect()) return 1;
  std::string first;
  std::string second;
  std::thread other([&] { first = terminal.credit(); });
  second = terminal.credit();
  other.join();
  std::cout << first << ' ' << second << '\n';
}
