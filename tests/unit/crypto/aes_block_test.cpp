#include <gtest/gtest.h>

#include "unit/crypto/crypto_support.h"

using mvx2::test::AesBlock;
using mvx2::test::aesDecrypted;
using mvx2::test::aesDecryptedEquivalently;
using mvx2::test::aesEncrypted;
using mvx2::test::AesKey;
using mvx2::test::aesRounds;
using mvx2::test::aesScheduleWords;
using mvx2::test::arrayOf;
using mvx2::test::Bytes;
using mvx2::test::RandomBytes;
using mvx2::test::readVectors;
using mvx2::test::Vector;

namespace {

// A schedule of random words, which no key expands to: the block functions take the words as they are.
struct RandomSchedule {
  explicit RandomSchedule(RandomBytes& random) {
    for (uint32_t& word : w) word = random.word();
  }
  std::array<uint32_t, 60> w;
};

void addBlock(AesBlock& block, const AesBlock& other) {
  for (unsigned int i = 0; i < 16; ++i) block[i] = static_cast<unsigned char>(block[i] ^ other[i]);
}

// The three functions as compositions of the exported steps.
AesBlock composedCipher(unsigned int type, AesBlock state, const uint32_t* w) {
  const unsigned int Nr = aesRounds(type);
  aes_AddRoundKey(state.data(), w, 0);
  for (unsigned int round = 1; round < Nr; ++round) {
    aes_SubBytes(state.data());
    aes_ShiftRows(state.data());
    aes_MixColumns(state.data());
    aes_AddRoundKey(state.data(), w, round);
  }
  aes_SubBytes(state.data());
  aes_ShiftRows(state.data());
  aes_AddRoundKey(state.data(), w, Nr);
  return state;
}

AesBlock composedInvCipher(unsigned int type, AesBlock state, const uint32_t* w) {
  const unsigned int Nr = aesRounds(type);
  aes_AddRoundKey(state.data(), w, Nr);
  for (unsigned int round = Nr - 1; round > 0; --round) {
    aes_InvShiftRows(state.data());
    aes_InvSubBytes(state.data());
    aes_AddRoundKey(state.data(), w, round);
    aes_InvMixColumns(state.data());
  }
  aes_InvShiftRows(state.data());
  aes_InvSubBytes(state.data());
  aes_AddRoundKey(state.data(), w, 0);
  return state;
}

AesBlock composedEqInvCipher(unsigned int type, AesBlock state, const uint32_t* dw) {
  const unsigned int Nr = aesRounds(type);
  aes_AddRoundKey(state.data(), dw, Nr);
  for (unsigned int round = Nr - 1; round > 0; --round) {
    aes_InvSubBytes(state.data());
    aes_InvShiftRows(state.data());
    aes_InvMixColumns(state.data());
    aes_AddRoundKey(state.data(), dw, round);
  }
  aes_InvSubBytes(state.data());
  aes_InvShiftRows(state.data());
  aes_AddRoundKey(state.data(), dw, 0);
  return state;
}

TEST(AesCipher, GivesThePublishedCiphertexts) {
  std::vector<Vector> vectors = readVectors("fips-197.txt", "C.");
  vectors.push_back(readVectors("fips-197.txt", "B").front());
  for (const Vector& vector : vectors) {
    SCOPED_TRACE(vector.title);
    EXPECT_EQ(aesEncrypted(AesKey(vector["key"]), arrayOf<AesBlock>(vector["plaintext"])),
              arrayOf<AesBlock>(vector["ciphertext"]));
  }
}

TEST(AesInvCipher, GivesThePublishedPlaintexts) {
  for (const Vector& vector : readVectors("fips-197.txt", "C.")) {
    SCOPED_TRACE(vector.title);
    EXPECT_EQ(aesDecrypted(AesKey(vector["key"]), arrayOf<AesBlock>(vector["ciphertext"])),
              arrayOf<AesBlock>(vector["plaintext"]));
  }
}

TEST(AesEqInvCipher, GivesThePublishedPlaintexts) {
  for (const Vector& vector : readVectors("fips-197.txt", "C.")) {
    SCOPED_TRACE(vector.title);
    EXPECT_EQ(aesDecryptedEquivalently(AesKey(vector["key"]), arrayOf<AesBlock>(vector["ciphertext"])),
              arrayOf<AesBlock>(vector["plaintext"]));
  }
}

TEST(AesCipher, ChainsToThePublishedCbcCiphertexts) {
  for (const Vector& vector : readVectors("sp800-38a.txt")) {
    SCOPED_TRACE(vector.title);
    const AesKey key(vector["key"]);
    auto iv = arrayOf<AesBlock>(vector["iv"]);
    Bytes text = vector["plaintext"];
    for (std::size_t i = 0; i < text.size(); i += 16) {
      aes_Cipher(key.type, text.data() + i, text.data() + i, key.w.data(), iv.data());
    }
    EXPECT_EQ(text, vector["ciphertext"]);
  }
}

TEST(AesInvCipher, ChainsToThePublishedCbcPlaintexts) {
  for (const Vector& vector : readVectors("sp800-38a.txt")) {
    SCOPED_TRACE(vector.title);
    const AesKey key(vector["key"]);
    auto iv = arrayOf<AesBlock>(vector["iv"]);
    const Bytes& cipherText = vector["ciphertext"];
    Bytes plainText(cipherText.size());
    for (std::size_t i = 0; i < cipherText.size(); i += 16) {
      aes_InvCipher(key.type, cipherText.data() + i, plainText.data() + i, key.w.data(), iv.data());
    }
    EXPECT_EQ(plainText, vector["plaintext"]);
  }
}

TEST(AesCipher, EqualsTheCompositionOfTheRoundStepsForAnyWords) {
  RandomBytes random(10);
  for (int i = 0; i < 3000; ++i) {
    const unsigned int type = random.below(3);
    const RandomSchedule schedule(random);
    const AesBlock plainText = random.array<16>();
    AesBlock iv = random.array<16>();
    AesBlock expected = plainText;
    addBlock(expected, iv);
    expected = composedCipher(type, expected, schedule.w.data());
    AesBlock cipherText;
    aes_Cipher(type, plainText.data(), cipherText.data(), schedule.w.data(), iv.data());
    ASSERT_EQ(cipherText, expected);
  }
}

TEST(AesInvCipher, EqualsTheCompositionOfTheRoundStepsForAnyWords) {
  RandomBytes random(11);
  for (int i = 0; i < 3000; ++i) {
    const unsigned int type = random.below(3);
    const RandomSchedule schedule(random);
    const AesBlock cipherText = random.array<16>();
    AesBlock iv = random.array<16>();
    AesBlock expected = composedInvCipher(type, cipherText, schedule.w.data());
    addBlock(expected, iv);
    AesBlock plainText;
    aes_InvCipher(type, cipherText.data(), plainText.data(), schedule.w.data(), iv.data());
    ASSERT_EQ(plainText, expected);
  }
}

// A schedule that a key expands to, but for one bit.
struct AlteredSchedule {
  AlteredSchedule(unsigned int type, RandomBytes& random)
      : w(AesKey(random.bytes(std::size_t{16} + std::size_t{8} * type)).w) {
    w[random.below(aesScheduleWords(type))] ^= 1U << random.below(32);
  }
  std::array<uint32_t, 61> w;
};

TEST(AesInvCipher, EqualsTheCompositionOfTheRoundStepsWhereOneBitOfAScheduleIsAltered) {
  RandomBytes random(13);
  for (int i = 0; i < 6000; ++i) {
    const unsigned int type = random.below(3);
    const AlteredSchedule schedule(type, random);
    const AesBlock cipherText = random.array<16>();
    AesBlock iv = random.array<16>();
    AesBlock expected = composedInvCipher(type, cipherText, schedule.w.data());
    addBlock(expected, iv);
    AesBlock block = cipherText;
    aes_InvCipher(type, block.data(), block.data(), schedule.w.data(), iv.data());
    ASSERT_EQ(block, expected);
    ASSERT_EQ(iv, expected);
  }
}

TEST(AesEqInvCipher, EqualsTheCompositionOfTheRoundStepsForAnyWords) {
  RandomBytes random(12);
  for (int i = 0; i < 3000; ++i) {
    const unsigned int type = random.below(3);
    const RandomSchedule schedule(random);
    const AesBlock cipherText = random.array<16>();
    AesBlock plainText;
    aes_EqInvCipher(type, cipherText.data(), plainText.data(), schedule.w.data());
    ASSERT_EQ(plainText, composedEqInvCipher(type, cipherText, schedule.w.data()));
  }
}

class AesBlocks : public testing::TestWithParam<unsigned int> {
 protected:
  RandomBytes random{20 + GetParam()};
  AesKey key{random.bytes(std::size_t{16} + std::size_t{8} * GetParam())};
  AesBlock block = random.array<16>();
  AesBlock iv = random.array<16>();
  AesBlock out = {};
};

TEST_P(AesBlocks, CipherLeavesTheCiphertextInTheChainingValueAndReturnsZero) {
  EXPECT_EQ(aes_Cipher(key.type, block.data(), out.data(), key.w.data(), iv.data()), 0);
  EXPECT_EQ(iv, out);
}

TEST_P(AesBlocks, CipherWorksInPlace) {
  AesBlock inPlace = block;
  AesBlock sameIv = iv;
  aes_Cipher(key.type, block.data(), out.data(), key.w.data(), iv.data());
  aes_Cipher(key.type, inPlace.data(), inPlace.data(), key.w.data(), sameIv.data());
  EXPECT_EQ(inPlace, out);
  EXPECT_EQ(sameIv, iv);
}

TEST_P(AesBlocks, InvCipherLeavesItsInputInTheChainingValueAndReturnsZero) {
  EXPECT_EQ(aes_InvCipher(key.type, block.data(), out.data(), key.w.data(), iv.data()), 0);
  EXPECT_EQ(iv, block);
}

TEST_P(AesBlocks, InvCipherInPlaceChainsOnTheDecryptedBlock) {
  AesBlock inPlace = block;
  AesBlock sameIv = iv;
  aes_InvCipher(key.type, block.data(), out.data(), key.w.data(), iv.data());
  aes_InvCipher(key.type, inPlace.data(), inPlace.data(), key.w.data(), sameIv.data());
  EXPECT_EQ(inPlace, out);
  EXPECT_EQ(sameIv, out);
}

TEST_P(AesBlocks, BothDecryptionsUndoTheEncryption) {
  const AesBlock cipherText = aesEncrypted(key, block);
  EXPECT_EQ(aesDecrypted(key, cipherText), block);
  EXPECT_EQ(aesDecryptedEquivalently(key, cipherText), block);
}

TEST_P(AesBlocks, EqInvCipherWorksInPlace) {
  AesBlock inPlace = block;
  aes_EqInvCipher(key.type, inPlace.data(), inPlace.data(), key.dw.data());
  EXPECT_EQ(inPlace, aesDecryptedEquivalently(key, block));
}

TEST_P(AesBlocks, BlocksMayLieAtAnyAddress) {
  alignas(8) std::array<unsigned char, 40> memory = {};
  std::copy(block.begin(), block.end(), memory.begin() + 1);
  std::copy(iv.begin(), iv.end(), memory.begin() + 19);
  aes_Cipher(key.type, block.data(), out.data(), key.w.data(), iv.data());
  aes_Cipher(key.type, memory.data() + 1, memory.data() + 1, key.w.data(), memory.data() + 19);
  EXPECT_TRUE(std::equal(out.begin(), out.end(), memory.begin() + 1));
  EXPECT_TRUE(std::equal(out.begin(), out.end(), memory.begin() + 19));
}

INSTANTIATE_TEST_SUITE_P(AllKeySizes, AesBlocks, testing::Values(0U, 1U, 2U));

TEST(AesBlockFunctions, RefuseATypeThatAesDoesNotHaveAndTouchNothing) {
  const std::array<uint32_t, 61> w = {};
  const AesBlock block = {1, 2, 3};
  AesBlock out = {4, 5, 6};
  AesBlock iv = {7, 8, 9};
  EXPECT_EQ(aes_Cipher(3, block.data(), out.data(), w.data(), iv.data()), -1);
  EXPECT_EQ(aes_InvCipher(3, block.data(), out.data(), w.data(), iv.data()), -1);
  aes_EqInvCipher(3, block.data(), out.data(), w.data());
  EXPECT_EQ(out, (AesBlock{4, 5, 6}));
  EXPECT_EQ(iv, (AesBlock{7, 8, 9}));
}

}  // namespace
