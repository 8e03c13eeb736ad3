// The rounds of AES on a state of four words, one word a column, row 0 its most significant byte.
//
// A round is 16 table look-ups: SubBytes and MixColumns of one byte are one entry, which holds what the byte
// adds to its new column; ShiftRows is in the choice of the columns. The tables are constants computed by the
// compiler.
#ifndef MVX2_CRYPTO_AES_ROUNDS_H
#define MVX2_CRYPTO_AES_ROUNDS_H

#include <array>
#include <cstdint>
#include <cstring>

#include "crypto/aes_tables.h"

namespace mvx2 {

struct State {
  std::uint32_t c0, c1, c2, c3;
};

inline State operator^(const State& a, const State& b) {
  return {a.c0 ^ b.c0, a.c1 ^ b.c1, a.c2 ^ b.c2, a.c3 ^ b.c3};
}

constexpr std::uint32_t aesWord(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3) {
  return (std::uint32_t{b0} << 24) | (std::uint32_t{b1} << 16) | (std::uint32_t{b2} << 8) | std::uint32_t{b3};
}

// Between a word in memory, most significant byte first, and a word of the processor.
inline std::uint32_t bigEndian(std::uint32_t word) {
  return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? __builtin_bswap32(word) : word;
}

inline std::uint32_t loadWord(const unsigned char* bytes) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return bigEndian(word);
}

inline void storeWord(unsigned char* bytes, std::uint32_t word) {
  word = bigEndian(word);
  std::memcpy(bytes, &word, sizeof word);
}

inline State loadState(const unsigned char* block) {
  return {loadWord(block), loadWord(block + 4), loadWord(block + 8), loadWord(block + 12)};
}

inline void storeState(unsigned char* block, const State& state) {
  storeWord(block, state.c0);
  storeWord(block + 4, state.c1);
  storeWord(block + 8, state.c2);
  storeWord(block + 12, state.c3);
}

inline State roundKey(const std::uint32_t* w) { return {w[0], w[1], w[2], w[3]}; }

// The byte of a word that is in row r.
template <unsigned int r>
constexpr std::uint32_t rowOf(std::uint32_t word) {
  return (word >> (24 - 8 * r)) & 0xff;
}

// ARM rotates the operand of an exclusive-or at no cost: one table of 1 KiB serves all four rows. Elsewhere a
// rotation is an instruction of its own, and each row has its table.
#if defined(__arm__) || defined(__aarch64__)
inline constexpr unsigned int rowTables = 1;
#else
inline constexpr unsigned int rowTables = 4;
#endif

using ColumnTables = std::array<std::array<std::uint32_t, 256>, rowTables>;

constexpr std::uint32_t rotatedRight(std::uint32_t word, unsigned int bits) {
  return (word >> bits) | (word << ((32 - bits) % 32));
}

constexpr std::uint8_t xtime(std::uint8_t a) {
  return static_cast<std::uint8_t>((a << 1) ^ ((a >> 7) * 0x1b));
}

// The columns that MixColumns and InvMixColumns make of a byte in row 0.
constexpr std::uint32_t mixedColumn(std::uint8_t a) {
  const std::uint32_t a2 = xtime(a);
  return (a2 << 24) | (std::uint32_t{a} << 16) | (std::uint32_t{a} << 8) | (a2 ^ a);
}

constexpr std::uint32_t invMixedColumn(std::uint8_t a) {
  const std::uint32_t a2 = xtime(a);
  const std::uint32_t a4 = xtime(xtime(a));
  const std::uint32_t a8 = xtime(xtime(xtime(a)));
  return ((a8 ^ a4 ^ a2) << 24) | ((a8 ^ a) << 16) | ((a8 ^ a4 ^ a) << 8) | (a8 ^ a2 ^ a);
}

template <class ColumnOfByte>
constexpr ColumnTables columnTables(ColumnOfByte column) {
  ColumnTables tables = {};
  for (unsigned int r = 0; r < rowTables; ++r) {
    for (unsigned int a = 0; a < 256; ++a) {
      tables[r][a] = rotatedRight(column(static_cast<std::uint8_t>(a)), 8 * r);
    }
  }
  return tables;
}

inline constexpr ColumnTables encryption = columnTables([](std::uint8_t a) { return mixedColumn(SBox[a]); });
inline constexpr ColumnTables decryption =
    columnTables([](std::uint8_t a) { return invMixedColumn(InvSBox[a]); });
inline constexpr ColumnTables invMixing = columnTables(invMixedColumn);

template <unsigned int r>
inline std::uint32_t lookUp(const ColumnTables& tables, std::uint32_t word) {
  if constexpr (rowTables == 1) return rotatedRight(tables[0][rowOf<r>(word)], 8 * r);
  return tables[r % rowTables][rowOf<r>(word)];
}

// The column that comes from row 0 of the word a, row 1 of b, row 2 of c and row 3 of d, plus a word of the
// round key.
inline std::uint32_t column(std::uint32_t key, const ColumnTables& tables, std::uint32_t a, std::uint32_t b,
                            std::uint32_t c, std::uint32_t d) {
  return ((key ^ lookUp<0>(tables, a)) ^ lookUp<3>(tables, d)) ^
         (lookUp<1>(tables, b) ^ lookUp<2>(tables, c));
}

// The same in a last round, without a mixing of columns.
inline std::uint32_t lastColumn(std::uint32_t key, const std::array<std::uint8_t, 256>& box, std::uint32_t a,
                                std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return key ^ (std::uint32_t{box[rowOf<0>(a)]} << 24) ^ (std::uint32_t{box[rowOf<1>(b)]} << 16) ^
         (std::uint32_t{box[rowOf<2>(c)]} << 8) ^ std::uint32_t{box[rowOf<3>(d)]};
}

// InvMixColumns on one column.
inline std::uint32_t invMixed(std::uint32_t word) { return column(0, invMixing, word, word, word, word); }

inline State encryptionRound(const State& key, const State& s) {
  return {
      column(key.c0, encryption, s.c0, s.c1, s.c2, s.c3), column(key.c1, encryption, s.c1, s.c2, s.c3, s.c0),
      column(key.c2, encryption, s.c2, s.c3, s.c0, s.c1), column(key.c3, encryption, s.c3, s.c0, s.c1, s.c2)};
}

inline State decryptionRound(const State& key, const State& s) {
  return {
      column(key.c0, decryption, s.c0, s.c3, s.c2, s.c1), column(key.c1, decryption, s.c1, s.c0, s.c3, s.c2),
      column(key.c2, decryption, s.c2, s.c1, s.c0, s.c3), column(key.c3, decryption, s.c3, s.c2, s.c1, s.c0)};
}

// The cipher of FIPS 197, section 5.1, with the forward schedule w.
inline State encrypted(const std::uint32_t* w, unsigned int Nr, State s) {
  s = s ^ roundKey(w);
  for (unsigned int round = 1; round < Nr; ++round) {
    w += 4;
    s = encryptionRound(roundKey(w), s);
  }
  const State key = roundKey(w + 4);
  return {lastColumn(key.c0, SBox, s.c0, s.c1, s.c2, s.c3), lastColumn(key.c1, SBox, s.c1, s.c2, s.c3, s.c0),
          lastColumn(key.c2, SBox, s.c2, s.c3, s.c0, s.c1), lastColumn(key.c3, SBox, s.c3, s.c0, s.c1, s.c2)};
}

// The equivalent inverse cipher of section 5.3.5. `innerKey` gives the round key of a round other than the
// first and the last, InvMixColumns applied, from the place of its words.
template <class InnerKey>
inline State decrypted(const std::uint32_t* w, unsigned int Nr, State s, InnerKey innerKey) {
  w += static_cast<std::size_t>(4) * Nr;
  s = s ^ roundKey(w);
  for (unsigned int round = 1; round < Nr; ++round) {
    w -= 4;
    s = decryptionRound(innerKey(w), s);
  }
  const State key = roundKey(w - 4);
  return {lastColumn(key.c0, InvSBox, s.c0, s.c3, s.c2, s.c1),
          lastColumn(key.c1, InvSBox, s.c1, s.c0, s.c3, s.c2),
          lastColumn(key.c2, InvSBox, s.c2, s.c1, s.c0, s.c3),
          lastColumn(key.c3, InvSBox, s.c3, s.c2, s.c1, s.c0)};
}

}  // namespace mvx2

#endif
