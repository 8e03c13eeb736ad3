#include <gtest/gtest.h>

#include "unit/crypto/crypto_support.h"

using mvx2::test::AesBlock;
using mvx2::test::AesKey;
using mvx2::test::Bytes;
using mvx2::test::RandomBytes;
using mvx2::test::readVectors;
using mvx2::test::Vector;

namespace {

const Vector& round1() {
  static const Vector vector = readVectors("fips-197.txt", "B, round 1").front();
  return vector;
}

Bytes stepped(void (*step)(unsigned char*), const std::string& from) {
  Bytes state = round1()[from];
  step(state.data());
  return state;
}

AesBlock counting() {
  AesBlock block;
  for (unsigned int i = 0; i < 16; ++i) block[i] = static_cast<unsigned char>(i);
  return block;
}

// The S-box from its definition: the inverse in the field, then the affine map.
unsigned char product(unsigned int a, unsigned int b) {
  unsigned int sum = 0;
  for (; b != 0; b >>= 1) {
    if ((b & 1) != 0) sum ^= a;
    a = (a << 1) ^ ((a & 0x80) != 0 ? 0x11b : 0);
  }
  return static_cast<unsigned char>(sum);
}

unsigned char substitute(unsigned int a) {
  unsigned int inverse = 0;
  for (unsigned int b = 1; b < 256; ++b) {
    if (product(a, b) == 1) inverse = b;
  }
  unsigned int affine = 0x63;
  for (unsigned int i = 0; i < 5; ++i) affine ^= inverse << i | inverse >> (8 - i);
  return static_cast<unsigned char>(affine);
}

TEST(AesSteps, SubBytesGivesTheStateOfThePublishedRound) {
  EXPECT_EQ(stepped(aes_SubBytes, "start"), round1()["after SubBytes"]);
}

TEST(AesSteps, ShiftRowsGivesTheStateOfThePublishedRound) {
  EXPECT_EQ(stepped(aes_ShiftRows, "after SubBytes"), round1()["after ShiftRows"]);
}

TEST(AesSteps, MixColumnsGivesTheStateOfThePublishedRound) {
  EXPECT_EQ(stepped(aes_MixColumns, "after ShiftRows"), round1()["after MixColumns"]);
}

TEST(AesSteps, AddRoundKeyGivesTheStateOfThePublishedRound) {
  Bytes state = round1()["after MixColumns"];
  aes_AddRoundKey(state.data(), AesKey(readVectors("fips-197.txt", "B").front()["key"]).w.data(), 1);
  EXPECT_EQ(state, round1()["end"]);
}

TEST(AesSteps, InvSubBytesTakesThePublishedRoundBack) {
  EXPECT_EQ(stepped(aes_InvSubBytes, "after SubBytes"), round1()["start"]);
}

TEST(AesSteps, InvShiftRowsTakesThePublishedRoundBack) {
  EXPECT_EQ(stepped(aes_InvShiftRows, "after ShiftRows"), round1()["after SubBytes"]);
}

TEST(AesSteps, InvMixColumnsTakesThePublishedRoundBack) {
  EXPECT_EQ(stepped(aes_InvMixColumns, "after MixColumns"), round1()["after ShiftRows"]);
}

TEST(AesSteps, SubBytesFollowsTheDefinitionOfTheBoxForEveryByte) {
  for (unsigned int first = 0; first < 256; first += 16) {
    AesBlock state;
    for (unsigned int i = 0; i < 16; ++i) state[i] = static_cast<unsigned char>(first + i);
    aes_SubBytes(state.data());
    for (unsigned int i = 0; i < 16; ++i) EXPECT_EQ(state[i], substitute(first + i)) << first + i;
  }
}

TEST(AesSteps, InvSubBytesUndoesSubBytesForEveryByte) {
  for (unsigned int first = 0; first < 256; first += 16) {
    AesBlock state;
    for (unsigned int i = 0; i < 16; ++i) state[i] = static_cast<unsigned char>(first + i);
    const AesBlock before = state;
    aes_SubBytes(state.data());
    aes_InvSubBytes(state.data());
    EXPECT_EQ(state, before);
  }
}

TEST(AesSteps, ShiftRowsRotatesRowRLeftByRPlaces) {
  AesBlock state = counting();
  aes_ShiftRows(state.data());
  EXPECT_EQ(state, (AesBlock{0, 5, 10, 15, 4, 9, 14, 3, 8, 13, 2, 7, 12, 1, 6, 11}));
}

TEST(AesSteps, InvShiftRowsRotatesRowRRightByRPlaces) {
  AesBlock state = counting();
  aes_InvShiftRows(state.data());
  EXPECT_EQ(state, (AesBlock{0, 13, 10, 7, 4, 1, 14, 11, 8, 5, 2, 15, 12, 9, 6, 3}));
}

TEST(AesSteps, MixColumnsAndItsInverseFollowTheirMatrices) {
  constexpr std::array<unsigned int, 4> mix = {2, 3, 1, 1};
  constexpr std::array<unsigned int, 4> invMix = {14, 11, 13, 9};
  RandomBytes random(1);
  for (int i = 0; i < 1000; ++i) {
    const AesBlock state = random.array<16>();
    AesBlock mixed = state;
    AesBlock invMixed = state;
    aes_MixColumns(mixed.data());
    aes_InvMixColumns(invMixed.data());
    for (unsigned int c = 0; c < 4; ++c) {
      for (unsigned int r = 0; r < 4; ++r) {
        unsigned int sum = 0;
        unsigned int invSum = 0;
        for (unsigned int k = 0; k < 4; ++k) {
          sum ^= product(state[4 * c + (r + k) % 4], mix[k]);
          invSum ^= product(state[4 * c + (r + k) % 4], invMix[k]);
        }
        ASSERT_EQ(mixed[4 * c + r], sum);
        ASSERT_EQ(invMixed[4 * c + r], invSum);
      }
    }
  }
}

TEST(AesSteps, AddRoundKeyPutsTheMostSignificantByteOfAWordIntoRow0) {
  const std::array<uint32_t, 8> w = {0, 0, 0, 0, 0x00010203, 0x04050607, 0x08090a0b, 0x0c0d0e0f};
  AesBlock state = {};
  aes_AddRoundKey(state.data(), w.data(), 1);
  EXPECT_EQ(state, counting());
}

TEST(AesSteps, WordTakesTheFirstByteAsTheMostSignificantOne) {
  EXPECT_EQ(aes_Word(0x01, 0x23, 0xcd, 0xef), 0x0123cdefU);
}

TEST(AesSteps, RotWordMovesTheFirstByteToTheEnd) { EXPECT_EQ(aes_RotWord(0x09cf4f3c), 0xcf4f3c09U); }

TEST(AesSteps, SubWordSubstitutesEachByte) { EXPECT_EQ(aes_SubWord(0xcf4f3c09), 0x8a84eb01U); }

TEST(AesSteps, OperatorWithTwoMultipliesByXForEveryByte) {
  for (unsigned int a = 0; a < 256; ++a) {
    EXPECT_EQ(aes_Operator(static_cast<unsigned char>(a), 2), product(a, 2)) << a;
  }
}

TEST(AesSteps, OperatorWithALargerFactorReducesOnce) {
  EXPECT_EQ(aes_Operator(0x60, 3), 0x20 ^ 0x1b);
  EXPECT_EQ(aes_Operator(0xff, 4), 0xfc ^ 0x1b);
  EXPECT_EQ(aes_Operator(0x55, 3), 0xff);
}

}  // namespace
