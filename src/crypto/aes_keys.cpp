// The two key schedules: forward (FIPS 197, section 5.2) and of the equivalent inverse cipher
// (section 5.3.5).
#include <mvx2/aes.h>

#include <algorithm>

#include "crypto/aes_rounds.h"
#include "crypto/aes_tables.h"

using mvx2::AES_KBR;
using mvx2::aesWord;
using mvx2::invMixed;
using mvx2::loadState;
using mvx2::loadWord;
using mvx2::Rcon;
using mvx2::rowOf;
using mvx2::SBox;
using mvx2::State;

namespace {

void storeWords(uint32_t* w, const State& words) {
  w[0] = words.c0;
  w[1] = words.c1;
  w[2] = words.c2;
  w[3] = words.c3;
}

uint32_t substituted(uint32_t word) {
  return aesWord(SBox[rowOf<0>(word)], SBox[rowOf<1>(word)], SBox[rowOf<2>(word)], SBox[rowOf<3>(word)]);
}

// SubWord(RotWord(word)) with a round constant.
uint32_t groupStart(uint32_t word, std::uint8_t constant) {
  return aesWord(SBox[rowOf<1>(word)], SBox[rowOf<2>(word)], SBox[rowOf<3>(word)], SBox[rowOf<0>(word)]) ^
         (uint32_t{constant} << 24);
}

// The four words Nk places behind `back`: each is the XOR of its word of `back` and the word before it, which
// is `first` for the first one. Each is formed from `first` directly: the next step does not wait for a
// chain.
State extended(const State& back, uint32_t first) {
  const uint32_t sum1 = back.c0 ^ back.c1;
  const uint32_t sum2 = sum1 ^ back.c2;
  const uint32_t sum3 = sum2 ^ back.c3;
  return {back.c0 ^ first, sum1 ^ first, sum2 ^ first, sum3 ^ first};
}

void expand128(const unsigned char* key, uint32_t* w) {
  State words = loadState(key);
  storeWords(w, words);
  for (const std::uint8_t constant : Rcon) {
    words = extended(words, groupStart(words.c3, constant));
    storeWords(w += 4, words);
  }
}

// Seven groups of six words follow the key, then four words.
void expand192(const unsigned char* key, uint32_t* w) {
  State words = loadState(key);
  uint32_t word4 = loadWord(key + 16);
  uint32_t word5 = loadWord(key + 20);
  for (unsigned int group = 0;; ++group) {
    storeWords(w, words);
    if (group == 8) return;
    w[4] = word4;
    w[5] = word5;
    w += 6;
    words = extended(words, groupStart(word5, Rcon[group]));
    word5 ^= word4 ^ words.c3;
    word4 ^= words.c3;
  }
}

// Six groups of eight words follow the key, then four words.
void expand256(const unsigned char* key, uint32_t* w) {
  State words = loadState(key);
  State words4 = loadState(key + 16);
  for (unsigned int group = 0;; ++group) {
    storeWords(w, words);
    if (group == 7) return;
    storeWords(w + 4, words4);
    w += 8;
    words = extended(words, groupStart(words4.c3, Rcon[group]));
    words4 = extended(words4, substituted(words.c3));
  }
}

// Any other key length: as the standard writes it, so many words.
void expandAny(const unsigned char* key, uint32_t* w, unsigned int Nk, unsigned int words) {
  for (unsigned int i = 0; i < words; ++i) {
    if (i < Nk) {
      w[i] = loadWord(key + std::size_t{4} * i);
      continue;
    }
    uint32_t word = w[i - 1];
    const unsigned int group = i / Nk;
    // A short key in a long schedule needs more round constants than there are: the rest count as zero.
    if (i % Nk == 0) word = groupStart(word, group <= Rcon.size() ? Rcon[group - 1] : std::uint8_t{0});
    if (Nk >= 7 && i % Nk == 4) word = substituted(word);
    w[i] = w[i - Nk] ^ word;
  }
}

}  // namespace

void aes_KeyExpansion(unsigned int type, const unsigned char* key, uint32_t* w, unsigned int Nk) {
  if (type >= AES_KBR.size() || Nk == 0) return;
  if (Nk != AES_KBR[type].Nk) return expandAny(key, w, Nk, 4U * (AES_KBR[type].Nr + 1U));
  if (Nk == 4) return expand128(key, w);
  if (Nk == 6) return expand192(key, w);
  expand256(key, w);
}

void aes_KeyInversion(unsigned int type, const uint32_t* w, unsigned int /*words*/, uint32_t* dw) {
  if (type >= AES_KBR.size()) return;
  const unsigned int last = 4U * AES_KBR[type].Nr;
  // The decryption schedule has room for AES-256: the word after a shorter schedule comes along.
  const unsigned int copied = std::min(last + 5, 60U);
  for (unsigned int i = 0; i < copied; ++i) dw[i] = i >= 4 && i < last ? invMixed(w[i]) : w[i];
  std::fill(dw + copied, dw + 60, 0U);
}
