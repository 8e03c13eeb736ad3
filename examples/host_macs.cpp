// Computes a MAC for a host: AES-CMAC with a key of 16 bytes, DES CBC-MAC with one of 8. The key comes from
// standard input in hexadecimal. A key on the command line would be seen by every user of the machine.
#include <mvx2/aes_cmac.h>
#include <mvx2/des_mac.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

namespace {

using Key = std::array<unsigned char, 16>;

std::size_t readKey(Key& key) {
  // Without its buffer the stream keeps no copy of the key.
  static_cast<void>(std::setvbuf(stdin, nullptr, _IONBF, 0));
  std::size_t length = 0;
  // Two digits always fit into a byte.
  while (length < key.size() && std::scanf("%2hhx", &key[length]) == 1) ++length;  // NOLINT(cert-err34-c)
  return length;
}

void show(const char* name, const unsigned char* mac, std::size_t length) {
  std::printf("%s ", name);
  for (std::size_t i = 0; i < length; ++i) std::printf("%02x", mac[i]);
  std::printf("\n");
}

void showAesCmac(const Key& key, const std::string& message) {
  unsigned char k1[16];
  unsigned char k2[16];
  unsigned char mac[16];
  unsigned char iv[16] = {};  // zeros give the published CMAC; the last MAC would continue a chain
  const auto* const bytes = reinterpret_cast<const unsigned char*>(message.data());
  aes_GenerateSubKey(key.data(), k1, k2);
  aes_buildCmac(key.data(), k1, k2, bytes, static_cast<unsigned char>(message.size()), mac, iv);
  // The subkeys are as secret as the key. explicit_bzero() is a store that no optimiser drops.
  explicit_bzero(k1, sizeof k1);
  explicit_bzero(k2, sizeof k2);
  show("AES-CMAC", mac, sizeof mac);
}

void showDesMac(const Key& key, std::string message) {
  message.resize((message.size() + 7) / 8 * 8);  // whole blocks; the padding is the caller's choice
  unsigned char mac[4];
  unsigned char iv[8] = {};
  const auto* const bytes = reinterpret_cast<const unsigned char*>(message.data());
  des_ComputeMac(bytes, static_cast<unsigned int>(message.size()), key.data(), 8, mac, 0, iv);
  show("DES-MAC", mac, sizeof mac);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string message = argc == 2 ? argv[1] : "";
  Key key{};
  const std::size_t length = readKey(key);
  const bool good = (length == 16 && message.size() <= 255) || (length == 8 && !message.empty());
  if (good && length == 16) showAesCmac(key, message);
  if (good && length == 8) showDesMac(key, message);
  explicit_bzero(key.data(), key.size());
  if (!good) std::cerr << "A key of 32 or 16 digits, and a message of at most 255 bytes.\n";
  return good ? 0 : 1;
}
