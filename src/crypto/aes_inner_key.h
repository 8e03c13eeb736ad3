// InvMixColumns on a round key, for decryption straight from the forward schedule.
#ifndef MVX2_CRYPTO_AES_INNER_KEY_H
#define MVX2_CRYPTO_AES_INNER_KEY_H

#include <array>
#include <cstdint>
#include <cstring>

#include "crypto/aes_rounds.h"

namespace mvx2 {

#if (defined(__SSE2__) || defined(__ARM_NEON)) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

// Where the compiler may use registers of 16 bytes, arithmetic on all four words runs beside the look-ups of
// the round and takes less time than look-ups of its own.
using Words = std::uint32_t __attribute__((vector_size(16)));
using Bytes = std::uint8_t __attribute__((vector_size(16)));
using SignedBytes = std::int8_t __attribute__((vector_size(16)));

inline Words rotatedLeft(Words x, int bits) { return (x << bits) | (x >> (32 - bits)); }

inline Words xtime(Words x) {
  const auto bytes = reinterpret_cast<Bytes>(x);
  const auto carries = reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(x) < 0);
  return reinterpret_cast<Words>((bytes + bytes) ^ (carries & 0x1b));
}

// The inverse matrix is the matrix of MixColumns times the one that adds 4 * (a + b) to each of two rows a
// and b that are two apart.
inline Words invMixed(Words x) {
  x ^= xtime(xtime(x ^ rotatedLeft(x, 16)));
  const Words next = rotatedLeft(x, 8);
  const Words sum = x ^ next;
  return xtime(sum) ^ next ^ rotatedLeft(sum, 16);
}

inline State invMixedKey(const std::uint32_t* w) {
  Words words;
  std::memcpy(&words, w, sizeof words);
  words = invMixed(words);
  // Two moves out of the vector register instead of four.
  std::array<std::uint64_t, 2> halves;
  std::memcpy(halves.data(), &words, sizeof words);
  return {static_cast<std::uint32_t>(halves[0]), static_cast<std::uint32_t>(halves[0] >> 32),
          static_cast<std::uint32_t>(halves[1]), static_cast<std::uint32_t>(halves[1] >> 32)};
}

#else

inline State invMixedKey(const std::uint32_t* w) {
  return {invMixed(w[0]), invMixed(w[1]), invMixed(w[2]), invMixed(w[3])};
}

#endif

}  // namespace mvx2

#endif
