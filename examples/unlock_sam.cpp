// Unlocks the secure access module with a key from standard input (32 hexadecimal digits) and shows its
// serial number. A key on the command line would be seen by every user of the machine.
#include <mvx2/SAMInterfaces.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace {

bool readKey(std::array<unsigned char, 16>& key) {
  // Without its buffer the stream keeps no copy of the key.
  static_cast<void>(std::setvbuf(stdin, nullptr, _IONBF, 0));
  for (unsigned char& byte : key)
    // Two digits always fit into a byte.
    if (std::scanf("%2hhx", &byte) != 1) return false;  // NOLINT(cert-err34-c)
  return true;
}

}  // namespace

int main() {
  std::array<unsigned char, 16> key{};
  const bool isKey = readKey(key);
  SAMInterfaces* const sam = SAMInterfaces::getInstance();
  if (isKey) sam->SAM_connect(1);
  const bool unlocked = sam->SAM_isConnected() && sam->SAM_unlock(key.data(), key.size());
  // Not key.fill(0): the optimiser drops a store that nobody reads.
  explicit_bzero(key.data(), key.size());
  if (!isKey) {
    std::cerr << "The key has 32 hexadecimal digits.\n";
    return 1;
  }

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
