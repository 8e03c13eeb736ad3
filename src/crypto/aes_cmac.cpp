#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "crypto/secure.h"

namespace {

using Block = std::array<unsigned char, 16>;
// The forward schedule of AES-128.
using Schedule = std::array<std::uint32_t, 44>;

// out = in * x in the field of 2^128 elements (RFC 4493, section 2.3).
void doubled(const unsigned char* in, unsigned char* out) {
  const unsigned int carry = in[0] >> 7;
  for (unsigned int i = 0; i < 15; ++i) out[i] = static_cast<unsigned char>((in[i] << 1) | (in[i + 1] >> 7));
  out[15] = static_cast<unsigned char>((in[15] << 1) ^ (carry * 0x87));
}

void xorInto(unsigned char* block, const unsigned char* other) {
  for (unsigned int i = 0; i < 16; ++i) block[i] = static_cast<unsigned char>(block[i] ^ other[i]);
}

}  // namespace

void aes_GenerateSubKey(const unsigned char* key, unsigned char* K1, unsigned char* K2) {
  Schedule w;
  const mvx2::Wiper wipeSchedule(w);
  aes_KeyExpansion(0, key, w.data(), 4);
  Block L = {};
  const mvx2::Wiper wipeL(L);
  Block iv = {};
  const mvx2::Wiper wipeIv(iv);
  aes_Cipher(0, L.data(), L.data(), w.data(), iv.data());
  doubled(L.data(), K1);
  doubled(K1, K2);
}

void aes_buildCmac(const unsigned char* key, const unsigned char* K1, const unsigned char* K2,
                   const unsigned char* message, unsigned char length, unsigned char* mac,
                   unsigned char* iv) {
  Schedule w;
  const mvx2::Wiper wipeSchedule(w);
  aes_KeyExpansion(0, key, w.data(), 4);

  // All blocks but the last one go through as they are; the last one may be full, in part or empty.
  const unsigned int before = length == 0 ? 0 : (length - 1U) / 16;
  const unsigned int rest = length - 16 * before;
  Block block;
  const mvx2::Wiper wipeBlock(block);
  for (unsigned int i = 0; i < before; ++i) {
    aes_Cipher(0, message + 16UL * i, block.data(), w.data(), iv);
  }
  block.fill(0);
  if (rest > 0) std::memcpy(block.data(), message + 16UL * before, rest);
  if (rest < 16) block[rest] = 0x80;
  xorInto(block.data(), rest == 16 ? K1 : K2);
  aes_Cipher(0, block.data(), mac, w.data(), iv);
}

int aes_IsvalidCmac(void) { return 1; }
