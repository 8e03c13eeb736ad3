#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>

#include <array>
#include <cstdint>

#include "crypto/aes_rounds.h"
#include "crypto/secure.h"

using mvx2::encrypted;
using mvx2::loadState;
using mvx2::roundKey;
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

// What aes_buildCmac() works with, in one place so that one call wipes it.
struct Workspace {
  Schedule w;
  std::array<std::uint32_t, 4> lastBlock;
};

// The last block of a message, before a subkey is added: `rest` bytes, 0 to 16, padded unless they fill it.
// Put together from bytes: a load of a word from memory that bytes were copied to has to wait for them.
void padLastBlock(std::array<std::uint32_t, 4>& words, const unsigned char* bytes, unsigned int rest) {
  words = {};
  for (unsigned int i = 0; i < rest; ++i) words[i / 4] |= std::uint32_t{bytes[i]} << (24 - 8 * (i % 4));
  if (rest < 16) words[rest / 4] |= std::uint32_t{0x80} << (24 - 8 * (rest % 4));
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
  Workspace work;
  const Wiper wipeWork(work);
  const uint32_t* w = work.w.data();
  aes_KeyExpansion(0, key, work.w.data(), Nk);
  State chain = loadState(iv);
  unsigned int rest = length;
  for (; rest > 16; rest -= 16, message += 16) chain = encrypted(w, Nr, chain ^ loadState(message));
  padLastBlock(work.lastBlock, message, rest);
  chain = chain ^ roundKey(work.lastBlock.data()) ^ loadState(rest == 16 ? K1 : K2);
  chain = encrypted(w, Nr, chain);
  storeState(iv, chain);
  storeState(mac, chain);
}

int aes_IsvalidCmac(void) { return 1; }
