// Writes the account number and reads it back: what the terminal answers to a write is its own affair, only
// what it holds afterwards counts.
#include <mvx2/MVX2Interfaces.h>

#include <iostream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: write_account NUMBER\n";
    return 2;
  }
  const std::string account = argv[1];

  velmorin::MVX2Interfaces* const terminal = velmorin::MVX2Interfaces::getInstance(-1);
  if (!terminal->connect(3, velmorin::CONNECT_DEFAULT)) {
    std::cerr << "No terminal: is it plugged in, and does pcscd run?\n";
    return 1;
  }
  // The text methods show more than the typed ones: setAccount() would make a number of an error text too.
  const std::string answer = terminal->setAccount_CPtr(account.c_str());
  const std::string kept = terminal->getAccount_CPtr();
  terminal->releaseInstance();

  if (kept != account) {
    std::cerr << "Not written: the terminal answered \"" << answer << "\" and holds \"" << kept << "\".\n";
    return 1;
  }
  std::cout << "account " << kept << '\n';
}
