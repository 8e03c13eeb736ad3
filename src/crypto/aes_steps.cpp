// The steps of a round as FIPS 197 names them, on a state of 16 bytes.
#include <mvx2/aes.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "crypto/aes_tables.h"

using mvx2::InvSBox;
using mvx2::SBox;

namespace {

unsigned char twice(unsigned char a) { return aes_Operator(a, 2); }

// Moves row r by r places: column c receives its byte from column c + r * step.
void shiftRows(unsigned char* state, unsigned int step) {
  std::array<unsigned char, 16> old;
  std::memcpy(old.data(), state, old.size());
  for (unsigned int c = 0; c < 4; ++c) {
    for (unsigned int r = 0; r < 4; ++r) state[4 * c + r] = old[4 * ((c + r * step) % 4) + r];
  }
}

void mixColumn(unsigned char* column) {
  const std::array<unsigned char, 4> a = {column[0], column[1], column[2], column[3]};
  for (unsigned int r = 0; r < 4; ++r) {
    const unsigned char a1 = a[(r + 1) % 4];
    column[r] = static_cast<unsigned char>(twice(a[r]) ^ twice(a1) ^ a1 ^ a[(r + 2) % 4] ^ a[(r + 3) % 4]);
  }
}

void invMixColumn(unsigned char* column) {
  std::array<unsigned char, 4> x9;
  std::array<unsigned char, 4> x11;
  std::array<unsigned char, 4> x13;
  std::array<unsigned char, 4> x14;
  for (unsigned int r = 0; r < 4; ++r) {
    const unsigned char a = column[r];
    const unsigned char a2 = twice(a);
    const unsigned char a4 = twice(a2);
    const unsigned char a8 = twice(a4);
    x9[r] = static_cast<unsigned char>(a8 ^ a);
    x11[r] = static_cast<unsigned char>(a8 ^ a2 ^ a);
    x13[r] = static_cast<unsigned char>(a8 ^ a4 ^ a);
    x14[r] = static_cast<unsigned char>(a8 ^ a4 ^ a2);
  }
  for (unsigned int r = 0; r < 4; ++r) {
    column[r] = static_cast<unsigned char>(x14[r] ^ x11[(r + 1) % 4] ^ x13[(r + 2) % 4] ^ x9[(r + 3) % 4]);
  }
}

}  // namespace

void aes_AddRoundKey(unsigned char* state, const uint32_t* w, unsigned int round) {
  for (unsigned int c = 0; c < 4; ++c) {
    const uint32_t word = w[4 * round + c];
    for (unsigned int r = 0; r < 4; ++r) {
      state[4 * c + r] = static_cast<unsigned char>(state[4 * c + r] ^ (word >> (24 - 8 * r)));
    }
  }
}

void aes_SubBytes(unsigned char* state) {
  for (unsigned int i = 0; i < 16; ++i) state[i] = SBox[state[i]];
}

void aes_InvSubBytes(unsigned char* state) {
  for (unsigned int i = 0; i < 16; ++i) state[i] = InvSBox[state[i]];
}

void aes_ShiftRows(unsigned char* state) { shiftRows(state, 1); }

void aes_InvShiftRows(unsigned char* state) { shiftRows(state, 3); }

void aes_MixColumns(unsigned char* state) {
  for (std::size_t at = 0; at < 16; at += 4) mixColumn(state + at);
}

void aes_InvMixColumns(unsigned char* state) {
  for (std::size_t at = 0; at < 16; at += 4) invMixColumn(state + at);
}

uint32_t aes_SubWord(uint32_t word) {
  return aes_Word(SBox[word >> 24], SBox[(word >> 16) & 0xff], SBox[(word >> 8) & 0xff], SBox[word & 0xff]);
}

uint32_t aes_RotWord(uint32_t word) { return (word << 8) | (word >> 24); }

uint32_t aes_Word(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3) {
  return (uint32_t{b0} << 24) | (uint32_t{b1} << 16) | (uint32_t{b2} << 8) | uint32_t{b3};
}

unsigned char aes_Operator(unsigned char a, unsigned char b) {
  const unsigned int product = static_cast<unsigned int>(a) * b;
  return static_cast<unsigned char>(product > 0xff ? product ^ 0x1bU : product);
}
