// Sends one APDU to the card on the terminal and shows the reply. It uses the channel below the facade: its
// reply knows its length, and its exceptions say what failed.
#include <mvx2/USBChannel.h>

#include <exception>
#include <iomanip>
#include <iostream>
#include <string>

namespace {

void show(const std::string& bytes) {
  std::cout << std::hex << std::uppercase << std::setfill('0');
  for (const char byte : bytes) std::cout << std::setw(2) << int{static_cast<unsigned char>(byte)};
  std::cout << '\n';
}

}  // namespace

int main() {
  // GET DATA of PC/SC: the number of the card.
  const std::string apdu("\xFF\xCA\x00\x00\x00", 5);
  try {
    USBChannel channel(-1);
    show(channel.mvx2APDUTransaction(apdu.data(), static_cast<int>(apdu.size())));
  } catch (const std::exception& e) {
    std::cerr << "failed: " << e.what() << '\n';
    return 1;
  }
}
