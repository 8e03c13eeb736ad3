// InvMixColumns on a round key in the NEON registers of ARM.
#ifndef MVX2_CRYPTO_AES_NEON_H
#define MVX2_CRYPTO_AES_NEON_H

#include <arm_neon.h>

#include <cstdint>

#include "crypto/aes_rounds.h"

// Not every 32-bit ARM has these registers: unless the compiler may count on them, only functions marked so
// use them, and are called after a look at what the processor has.
#ifdef __ARM_NEON
#define MVX2_NEON
#else
#define MVX2_NEON [[gnu::target("fpu=neon")]]
#endif

namespace mvx2::neon {

// All bytes multiplied by x^n: what leaves a byte at its top comes back multiplied by 0x1b.
template <int n>
MVX2_NEON inline uint32x4_t xtimes(uint32x4_t words) {
  const uint8x16_t bytes = vreinterpretq_u8_u32(words);
  const poly8x16_t carries = vreinterpretq_p8_u8(vshrq_n_u8(bytes, 8 - n));
  return vreinterpretq_u32_u8(vshlq_n_u8(bytes, n)) ^
         vreinterpretq_u32_p8(vmulq_p8(carries, vdupq_n_p8(0x1b)));
}

MVX2_NEON inline uint32x4_t rotatedLeft8(uint32x4_t words) {
  return vsriq_n_u32(vshlq_n_u32(words, 8), words, 24);
}

MVX2_NEON inline uint32x4_t rotated16(uint32x4_t words) {
  return vreinterpretq_u32_u16(vrev32q_u16(vreinterpretq_u16_u32(words)));
}

// The inverse matrix is the matrix of MixColumns times the one that adds 4 * (a + b) to each of two rows a
// and b that are two apart.
MVX2_NEON inline State invMixedKey(const std::uint32_t* w) {
  uint32x4_t words = vld1q_u32(w);
  words ^= xtimes<2>(words ^ rotated16(words));
  const uint32x4_t next = rotatedLeft8(words);
  const uint32x4_t sum = words ^ next;
  words = xtimes<1>(sum) ^ next ^ rotated16(sum);
  // Two moves out of the vector register instead of four.
  const uint64x2_t pairs = vreinterpretq_u64_u32(words);
  const std::uint64_t first = vgetq_lane_u64(pairs, 0);
  const std::uint64_t second = vgetq_lane_u64(pairs, 1);
  return {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(first >> 32),
          static_cast<std::uint32_t>(second), static_cast<std::uint32_t>(second >> 32)};
}

}  // namespace mvx2::neon

#endif
