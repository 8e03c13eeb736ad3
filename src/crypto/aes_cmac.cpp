#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "crypto/aes_rounds.h"
#include "crypto/secure.h"

using mvx2::encrypted;
using mvx2::loadState;
using mvx2::State;
using mvx2::storeState;
using mvx2::Wiper;

namespace {

constexpr unsigned int Nk = 4;
constexpr unsigned int Nr = 10;
using Schedule = std::array<std::uint32_t, 44>;

// L * x in the field of 2^128 elements (RFC 4493, section 2.3).
State doubled(const State& L) {
  const std::uint32_t reduction = (L.c0 >> 31) * 0x87;
  return {(L.c0 << 1) | (L.c1 >> 31), (L.c1 << 1) | (L.c2 >> 31), (L.c2 << 1) | (L.c3 >> 31),
          (L.c3 << 1) ^ reduction};
}

// The last block of a message: `rest` bytes, 0 to 16, padded unless they fill it.
State lastBlock(const unsigned char* bytes, unsigned int rest, const unsigned char* K1,
                const unsigned char* K2) {
  if (rest == 16) return loadState(bytes) ^ loadState(K1);
  std::array<unsigned char, 16> padded = {};
  const Wiper wipePadded(padded);
  if (rest > 0) std::memcpy(padded.data(), bytes, rest);
  padded[rest] = 0x80;
  return loadState(padded.data()) ^ loadState(K2);
}

}  // namespace

void aes_GenerateSubKey(const unsigned char* key, unsigned char* K1, unsigned char* K2) {
  Schedule w;
  const Wiper wipeSchedule(w);
  aes_KeyExpansion(0, key, w.data(), Nk);
  State subKey = encrypted(w.data(), Nr, State{});
  const Wiper wipeSubKey(subKey);
  subKey = doubled(subKey);
  storeState(K1, subKey);
  storeState(K2, doubled(subKey));
}

void aes_buildCmac(const unsigned char* key, const unsigned char* K1, const unsigned char* K2,
                   const unsigned char* message, unsigned char length, unsigned char* mac,
                   unsigned char* iv) {
  Schedule w;
  const Wiper wipeSchedule(w);
  aes_KeyExpansion(0, key, w.data(), Nk);
  State chain = loadState(iv);
  unsigned int rest = length;
  for (; rest > 16; rest -= 16, message += 16) chain = encrypted(w.data(), Nr, chain ^ loadState(message));
  chain = encrypted(w.data(), Nr, chain ^ lastBlock(message, rest, K1, K2));
  storeState(iv, chain);
  storeState(mac, chain);
}

int aes_IsvalidCmac(void) { return 1; }
