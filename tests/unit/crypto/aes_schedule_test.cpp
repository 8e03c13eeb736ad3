#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "unit/crypto/crypto_support.h"

using mvx2::test::AesBlock;
using mvx2::test::AesKey;
using mvx2::test::aesKeyWords;
using mvx2::test::aesRounds;
using mvx2::test::aesScheduleWords;
using mvx2::test::Bytes;
using mvx2::test::RandomBytes;
using mvx2::test::readVectors;
using mvx2::test::Vector;

namespace {

constexpr uint32_t untouched = 0xa5a5a5a5;

Bytes keyOfType(unsigned int type, RandomBytes& random) {
  return random.bytes(std::size_t{16} + std::size_t{8} * type);
}

// InvMixColumns on one word through the exported step.
uint32_t invMixed(uint32_t word) {
  AesBlock state = {};
  aes_AddRoundKey(state.data(), std::array<uint32_t, 4>{word, 0, 0, 0}.data(), 0);
  aes_InvMixColumns(state.data());
  return aes_Word(state[0], state[1], state[2], state[3]);
}

TEST(AesKeyExpansion, GivesThePublishedSchedules) {
  for (const Vector& vector : readVectors("fips-197.txt", "A.")) {
    SCOPED_TRACE(vector.title);
    const AesKey key(vector["key"]);
    const Bytes& schedule = vector["schedule"];
    ASSERT_EQ(schedule.size(), 4 * aesScheduleWords(key.type));
    for (std::size_t i = 0; i < schedule.size() / 4; ++i) {
      EXPECT_EQ(key.w[i],
                aes_Word(schedule[4 * i], schedule[4 * i + 1], schedule[4 * i + 2], schedule[4 * i + 3]));
    }
  }
}

TEST(AesKeyExpansion, FollowsItsRecurrenceForRandomKeys) {
  RandomBytes random(2);
  for (unsigned int type = 0; type < 3; ++type) {
    const unsigned int Nk = aesKeyWords(type);
    for (int run = 0; run < 1000; ++run) {
      const AesKey key(keyOfType(type, random));
      uint32_t constant = 1;
      for (unsigned int i = Nk; i < aesScheduleWords(type); ++i) {
        uint32_t expected = key.w[i - 1];
        if (i % Nk == 0) {
          expected = aes_SubWord(aes_RotWord(expected)) ^ (constant << 24);
          constant = aes_Operator(static_cast<unsigned char>(constant), 2);
        } else if (Nk == 8 && i % Nk == 4) {
          expected = aes_SubWord(expected);
        }
        ASSERT_EQ(key.w[i], expected ^ key.w[i - Nk]) << "type " << type << ", word " << i;
      }
    }
  }
}

TEST(AesKeyExpansion, WritesTheScheduleAndNothingAfterIt) {
  RandomBytes random(3);
  for (unsigned int type = 0; type < 3; ++type) {
    const Bytes key = keyOfType(type, random);
    std::array<uint32_t, 62> w;
    w.fill(untouched);
    aes_KeyExpansion(type, key.data(), w.data(), aesKeyWords(type));
    EXPECT_NE(w[aesScheduleWords(type) - 1], untouched);
    for (std::size_t i = aesScheduleWords(type); i < w.size(); ++i) EXPECT_EQ(w[i], untouched) << i;
  }
}

TEST(AesKeyExpansion, WritesNothingForATypeThatAesDoesNotHaveOrAnEmptyKey) {
  const Bytes key(32, 0x42);
  std::array<uint32_t, 60> w;
  w.fill(untouched);
  const std::array<uint32_t, 60> before = w;
  aes_KeyExpansion(3, key.data(), w.data(), 4);
  aes_KeyExpansion(0, key.data(), w.data(), 0);
  EXPECT_EQ(w, before);
}

TEST(AesKeyExpansion, MakesAsManyWordsAsTheTypeSaysOfAKeyOfAnotherLength) {
  const unsigned int words[] = {44, 52, 60};
  const unsigned int keyLengths[] = {4, 6, 8};
  const Bytes key = RandomBytes(11).bytes(32);
  for (unsigned int type = 0; type < 3; ++type) {
    for (unsigned int of = 0; of < 3; ++of) {
      std::array<uint32_t, 61> own;
      std::array<uint32_t, 61> w;
      w.fill(untouched);
      aes_KeyExpansion(of, key.data(), own.data(), keyLengths[of]);
      aes_KeyExpansion(type, key.data(), w.data(), keyLengths[of]);
      const unsigned int shared = std::min(words[type], words[of]);
      EXPECT_TRUE(std::equal(w.begin(), w.begin() + shared, own.begin()))
          << type << " with Nk " << keyLengths[of];
      EXPECT_NE(w[words[type] - 1], untouched);
      EXPECT_EQ(w[words[type]], untouched);
    }
  }
}

TEST(AesKeyExpansion, TakesFromAKeyThatIsLongerThanTheScheduleWhatFits) {
  const Bytes key = RandomBytes(12).bytes(std::size_t{4} * 44);
  std::array<uint32_t, 45> w;
  w.fill(untouched);
  aes_KeyExpansion(0, key.data(), w.data(), 1000);
  EXPECT_EQ(w[43], aes_Word(key[172], key[173], key[174], key[175]));
  EXPECT_EQ(w[44], untouched);
}

TEST(AesKeyInversion, MixesTheInnerRoundKeysAndKeepsTheOuterOnes) {
  RandomBytes random(4);
  for (unsigned int type = 0; type < 3; ++type) {
    const AesKey key(keyOfType(type, random));
    const unsigned int last = 4 * aesRounds(type);
    for (unsigned int i = 0; i < last + 4; ++i) {
      const bool inner = i >= 4 && i < last;
      EXPECT_EQ(key.dw[i], inner ? invMixed(key.w[i]) : key.w[i]) << "type " << type << ", word " << i;
    }
  }
}

TEST(AesKeyInversion, CopiesTheWordAfterAShorterScheduleAndFillsUpWithZeros) {
  for (unsigned int type = 0; type < 2; ++type) {
    const std::size_t words = aesScheduleWords(type);
    std::array<uint32_t, 61> w;
    w.fill(0x12345678);
    w[words] = 0xdeadbeef;
    std::array<uint32_t, 60> dw;
    dw.fill(untouched);
    aes_KeyInversion(type, w.data(), 0, dw.data());
    EXPECT_EQ(dw[words], 0xdeadbeefU);
    for (std::size_t i = words + 1; i < dw.size(); ++i) EXPECT_EQ(dw[i], 0U) << i;
  }
}

TEST(AesKeyInversion, DropsTheExtraWordOfAes256) {
  std::array<uint32_t, 61> w = {};
  w[60] = 0xdeadbeef;
  std::array<uint32_t, 61> dw;
  dw.fill(untouched);
  aes_KeyInversion(2, w.data(), 0, dw.data());
  EXPECT_EQ(dw[59], 0U);
  EXPECT_EQ(dw[60], untouched);
}

TEST(AesKeyInversion, DoesNotReadTheWordCount) {
  RandomBytes random(5);
  const AesKey key(keyOfType(0, random));
  std::array<uint32_t, 60> dw;
  aes_KeyInversion(0, key.w.data(), 0xffffffff, dw.data());
  EXPECT_EQ(dw, key.dw);
}

TEST(AesKeyInversion, WorksInPlace) {
  RandomBytes random(6);
  for (unsigned int type = 0; type < 3; ++type) {
    const AesKey key(keyOfType(type, random));
    std::array<uint32_t, 61> schedule = key.w;
    aes_KeyInversion(type, schedule.data(), 0, schedule.data());
    EXPECT_TRUE(std::equal(key.dw.begin(), key.dw.end(), schedule.begin())) << type;
  }
}

TEST(AesKeyInversion, WritesNothingForATypeThatAesDoesNotHave) {
  const std::array<uint32_t, 61> w = {};
  std::array<uint32_t, 60> dw;
  dw.fill(untouched);
  aes_KeyInversion(3, w.data(), 0, dw.data());
  EXPECT_EQ(dw[0], untouched);
}

}  // namespace
