// Reads a few values of the terminal.
#include <mvx2/MVX2Interfaces.h>

#include <iostream>

int main() {
  velmorin::MVX2Interfaces* const terminal = velmorin::MVX2Interfaces::getInstance(-1);
  if (!terminal->connect(3, velmorin::CONNECT_DEFAULT)) {
    std::cerr << "No terminal: is it plugged in, and does pcscd run?\n";
    return 1;
  }
  std::cout << "firmware  " << terminal->getVersion_CPtr() << '\n'
            << "serial    " << terminal->getSerial() << '\n'
            << "credit    " << terminal->getCredit() << '\n'
            << "debit     " << terminal->getDebit() << '\n'
            << "purse     " << terminal->getPurse() << '\n';
  terminal->releaseInstance();
}
