// InvMixColumns on a round key, for decryption straight from the forward schedule.
#ifndef MVX2_CRYPTO_AES_INNER_KEY_H
#define MVX2_CRYPTO_AES_INNER_KEY_H

#include <cstdint>
#include <cstring>

#include "crypto/aes_rounds.h"

#if (defined(__ARM_PCS_VFP) || defined(__ARM_NEON)) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#include "crypto/aes_neon.h"
#endif

namespace mvx2 {

// Where the compiler may use registers of 16 bytes, arithmetic on all four words runs beside the look-ups of
// the round and takes less time than look-ups of its own.
#if defined(MVX2_NEON) && defined(__ARM_NEON)

using neon::invMixedKey;

#elif defined(__SSE2__)

using Pairs = std::uint64_t __attribute__((vector_size(16)));
using Words = std::uint32_t __attribute__((vector_size(16)));
using Halves = std::uint16_t __attribute__((vector_size(16)));
using Bytes = std::uint8_t __attribute__((vector_size(16)));
using SignedBytes = std::int8_t __attribute__((vector_size(16)));

inline Words rotatedLeft8(Words x) { return (x << 8) | (x >> 24); }

// A rotation by half a word is two shuffles of halves, which take fewer instructions than shifts.
inline Words rotated16(Words x) {
  const auto halves = reinterpret_cast<Halves>(x);
  return reinterpret_cast<Words>(__builtin_shufflevector(halves, halves, 1, 0, 3, 2, 5, 4, 7, 6));
}

inline Words xtime(Words x) {
  const auto bytes = reinterpret_cast<Bytes>(x);
  const auto carries = reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(x) < 0);
  return reinterpret_cast<Words>((bytes + bytes) ^ (carries & 0x1b));
}

// The inverse matrix is the matrix of MixColumns times the one that adds 4 * (a + b) to each of two rows a
// and b that are two apart.
inline Words invMixed(Words x) {
  x ^= xtime(xtime(x ^ rotated16(x)));
  const Words next = rotatedLeft8(x);
  const Words sum = x ^ next;
  return xtime(sum) ^ next ^ rotated16(sum);
}

inline State invMixedKey(const std::uint32_t* w) {
  Words words;
  std::memcpy(&words, w, sizeof words);
  words = invMixed(words);
  // Two moves out of the vector register instead of four.
  const auto pairs = reinterpret_cast<Pairs>(words);
  return {static_cast<std::uint32_t>(pairs[0]), static_cast<std::uint32_t>(pairs[0] >> 32),
          static_cast<std::uint32_t>(pairs[1]), static_cast<std::uint32_t>(pairs[1] >> 32)};
}

#else

inline State invMixedKey(const std::uint32_t* w) {
  return {invMixed(w[0]), invMixed(w[1]), invMixed(w[2]), invMixed(w[3])};
}

#endif

}  // namespace mvx2

#endif
