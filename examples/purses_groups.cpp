// Shows the purses and groups, and changes to the purse that is given.
#include <mvx2/MVX2Interfaces.h>

#include <cstdlib>
#include <iostream>

namespace {

// A list has ten entries; one with fewer numbers ends with a 0.
void show(const char* title, const unsigned int* list) {
  std::cout << title;
  for (int i = 0; i < 10 && list[i] != 0; ++i) std::cout << ' ' << list[i];
  std::cout << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  velmorin::MVX2Interfaces* const terminal = velmorin::MVX2Interfaces::getInstance(-1);
  if (!terminal->connect(3, velmorin::CONNECT_DEFAULT)) {
    std::cerr << "No terminal: is it plugged in, and does pcscd run?\n";
    return 1;
  }
  int result = 0;
  if (argc == 2) {
    const auto purse = static_cast<unsigned int>(std::strtoul(argv[1], nullptr, 10));
    terminal->chPurse(purse);
    if (terminal->getPurse() != static_cast<int>(purse)) {
      std::cerr << "The terminal did not change to purse " << purse << ".\n";
      result = 1;
    }
  }
  show("purses", terminal->getListPurses());
  show("groups", terminal->getListGrp());
  std::cout << "in use " << terminal->getPurse() << '\n';
  terminal->releaseInstance();
  return result;
}
