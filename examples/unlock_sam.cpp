// Unlocks the secure access module with a key from standard input (32 hexadecimal digits) and shows its
// serial number. A key on the command line would be seen by every user of the machine.
#include <mvx2/SAMInterfaces.h>

#include <array>
#include <cstdio>
#include <iostream>

int main() {
  std::array<unsigned char, 16> key{};
  for (unsigned char& byte : key)
    // Two digits always fit into a byte.
    if (std::scanf("%2hhx", &byte) != 1) {  // NOLINT(cert-err34-c)
      std::cerr << "The key has 32 hexadecimal digits.\n";
      return 1;
    }

  SAMInterfaces* const sam = SAMInterfaces::getInstance();
  sam->SAM_connect(1);
  const bool unlocked = sam->SAM_isConnected() && sam->SAM_unlock(key.data(), key.size());
  key.fill(0);

  std::array<char, 7> serial{};
  if (!unlocked || !sam->SAM_getVersion(serial.data())) {
    std::cerr << (sam->SAM_isConnected() ? "The module refuses.\n"
                                         : "No module: is its reader plugged in?\n");
    return 1;
  }
  std::printf("SAM unlocked, serial ");
  for (const char byte : serial) std::printf("%02X", static_cast<unsigned char>(byte));
  std::printf("\n");
  SAMInterfaces::releaseInstance();
}
