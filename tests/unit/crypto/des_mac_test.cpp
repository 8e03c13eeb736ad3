#include <gtest/gtest.h>
#include <mvx2/des.h>
#include <mvx2/des_mac.h>

#include "unit/crypto/crypto_support.h"

using mvx2::test::arrayOf;
using mvx2::test::Bytes;
using mvx2::test::DesBlock;
using mvx2::test::RandomBytes;
using mvx2::test::readVectors;
using mvx2::test::Vector;

namespace {

using ShortMac = std::array<unsigned char, 4>;

ShortMac cbcMac(const Bytes& key, const Bytes& message, DesBlock& iv) {
  ShortMac mac = {0xaa, 0xaa, 0xaa, 0xaa};
  des_ComputeMac(message.data(), static_cast<unsigned int>(message.size()), key.data(),
                 static_cast<unsigned int>(key.size()), mac.data(), 0, iv.data());
  return mac;
}

DesBlock cmac(const Bytes& key, const Bytes& message, DesBlock& iv) {
  DesBlock mac = {};
  des3_computeCmac(message.data(), static_cast<unsigned int>(message.size()), key.data(),
                   static_cast<unsigned int>(key.size()), mac.data(), 0, iv.data());
  return mac;
}

DesBlock tdeaEncrypted(const Bytes& key, const DesBlock& block) {
  des3_context ctx;
  key.size() == 16 ? des3_set2key_enc(&ctx, key.data()) : des3_set3key_enc(&ctx, key.data());
  DesBlock out;
  des3_crypt_ecb(&ctx, block.data(), out.data());
  return out;
}

DesBlock sum(const DesBlock& a, const DesBlock& b) {
  DesBlock out;
  for (std::size_t i = 0; i < 8; ++i) out[i] = static_cast<unsigned char>(a[i] ^ b[i]);
  return out;
}

struct SubKeys {
  explicit SubKeys(const Bytes& key) {
    des3_cmac_subkey_generation(key.data(), static_cast<unsigned int>(key.size()), K1.data(), K2.data());
  }
  DesBlock K1;
  DesBlock K2;
};

void expectPublishedCmac(const std::string& titleStart) {
  for (const Vector& vector : readVectors("sp800-38b.txt", titleStart)) {
    SCOPED_TRACE(vector.title);
    if (vector.values.count("K1") != 0) {
      const SubKeys keys(vector["key"]);
      EXPECT_EQ(keys.K1, arrayOf<DesBlock>(vector["K1"]));
      EXPECT_EQ(keys.K2, arrayOf<DesBlock>(vector["K2"]));
    } else {
      DesBlock iv = {};
      EXPECT_EQ(cmac(vector["key"], vector["message"], iv), arrayOf<DesBlock>(vector["mac"]));
    }
  }
}

TEST(DesCbcMac, GivesThePublishedCodeOfFips113) {
  const Vector vector = readVectors("fips-113.txt").front();
  DesBlock iv = {};
  EXPECT_EQ(cbcMac(vector["key"], vector["message"], iv), arrayOf<ShortMac>(vector["mac"]));
}

TEST(DesCbcMac, WithASixteenByteKeyEncryptsEveryBlockWithTdea) {
  RandomBytes random(50);
  const Bytes key = random.bytes(16);
  const DesBlock start = random.array<8>();
  const Bytes message = random.bytes(16);
  const DesBlock first = tdeaEncrypted(key, sum(start, arrayOf<DesBlock>(message)));
  const DesBlock last =
      tdeaEncrypted(key, sum(first, arrayOf<DesBlock>(Bytes(message.begin() + 8, message.end()))));
  DesBlock iv = start;
  const ShortMac mac = cbcMac(key, message, iv);
  EXPECT_TRUE(std::equal(mac.begin(), mac.end(), last.begin()));
  EXPECT_EQ(iv, last);
}

TEST(DesCbcMac, WithAnyOtherKeyLengthUsesTheFirstEightBytesAsADesKey) {
  RandomBytes random(51);
  const Bytes message = random.bytes(16);
  const Bytes key = random.bytes(24);
  DesBlock expectedIv = {};
  const ShortMac expected = cbcMac(Bytes(key.begin(), key.begin() + 8), message, expectedIv);
  for (const unsigned int keyLength : {0U, 7U, 9U, 15U, 17U, 24U}) {
    DesBlock iv = {};
    ShortMac mac = {};
    des_ComputeMac(message.data(), 16, key.data(), keyLength, mac.data(), 0, iv.data());
    EXPECT_EQ(mac, expected) << keyLength;
    EXPECT_EQ(iv, expectedIv) << keyLength;
  }
}

TEST(DesCbcMac, InPiecesGivesWhatOneCallGives) {
  RandomBytes random(52);
  for (const std::size_t keyLength : {8U, 16U}) {
    const Bytes key = random.bytes(keyLength);
    const Bytes message = random.bytes(200);
    DesBlock iv = random.array<8>();
    DesBlock piecewiseIv = iv;
    const ShortMac mac = cbcMac(key, message, iv);
    ShortMac last = {};
    for (std::size_t i = 0; i < message.size(); i += 40) {
      last = cbcMac(
          key, Bytes(message.begin() + static_cast<long>(i), message.begin() + static_cast<long>(i + 40)),
          piecewiseIv);
    }
    EXPECT_EQ(last, mac);
    EXPECT_EQ(piecewiseIv, iv);
  }
}

TEST(DesCbcMac, OfALengthThatIsNoMultipleOfEightIsZeroAndKeepsTheChainingValue) {
  for (const std::size_t keyLength : {8U, 16U}) {
    for (const std::size_t length : {1U, 7U, 9U, 12U, 15U, 17U}) {
      DesBlock iv = {1, 2, 3, 4, 5, 6, 7, 8};
      EXPECT_EQ(cbcMac(Bytes(keyLength, 0x42), Bytes(length, 0x17), iv), ShortMac{}) << length;
      EXPECT_EQ(iv, (DesBlock{1, 2, 3, 4, 5, 6, 7, 8}));
    }
  }
}

TEST(DesCbcMac, OfNothingIsZeroAndKeepsTheChainingValue) {
  DesBlock iv = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(cbcMac(Bytes(16, 0x42), Bytes{}, iv), ShortMac{});
  EXPECT_EQ(iv, (DesBlock{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(DesCbcMac, DoesNotReadItsReservedArgument) {
  const Bytes key(16, 0x42);
  const Bytes message(8, 0x17);
  DesBlock iv = {};
  const ShortMac expected = cbcMac(key, message, iv);
  DesBlock otherIv = {};
  ShortMac mac = {};
  des_ComputeMac(message.data(), 8, key.data(), 16, mac.data(), 0xffffffff, otherIv.data());
  EXPECT_EQ(mac, expected);
}

TEST(TdeaCmac, GivesTheThreeKeySubkeysAndCodesOfSp80038b) { expectPublishedCmac("Three-key TDEA"); }

TEST(TdeaCmac, GivesTheTwoKeySubkeysAndCodesOfSp80038b) { expectPublishedCmac("Two-key TDEA"); }

TEST(TdeaCmac, SubkeysOfAnyOtherKeyLengthAreThoseOfDes) {
  const Vector vector = readVectors("fips-81.txt", "ECB").front();
  des_context ctx;
  des_setkey_enc(&ctx, vector["key"].data());
  DesBlock L = {};
  des_crypt_ecb(&ctx, L.data(), L.data());
  const SubKeys keys(vector["key"]);
  for (unsigned int bit = 0; bit < 63; ++bit) {
    const auto at = [bit](const DesBlock& block, unsigned int offset) {
      return (block[(bit + offset) / 8] >> (7 - (bit + offset) % 8)) & 1;
    };
    if (bit < 56) {
      EXPECT_EQ(at(keys.K1, 0), at(L, 1)) << bit;
      EXPECT_EQ(at(keys.K2, 0), at(keys.K1, 1)) << bit;
    }
  }
  EXPECT_EQ(keys.K1[7], static_cast<unsigned char>((L[7] << 1) ^ ((L[0] & 0x80) != 0 ? 0x1b : 0)));
  EXPECT_EQ(keys.K2[7],
            static_cast<unsigned char>((keys.K1[7] << 1) ^ ((keys.K1[0] & 0x80) != 0 ? 0x1b : 0)));
}

TEST(TdeaCmac, OfAShortMessageIsOneEncryptionWithTheChainingValueAdded) {
  RandomBytes random(53);
  for (const std::size_t keyLength : {16U, 24U}) {
    const Bytes key = random.bytes(keyLength);
    const SubKeys keys(key);
    for (std::size_t length = 0; length <= 8; ++length) {
      const Bytes message = random.bytes(length);
      auto block = arrayOf<DesBlock>(message);
      if (length < 8) block[length] = 0x80;
      DesBlock iv = random.array<8>();
      const DesBlock expected = tdeaEncrypted(key, sum(sum(block, iv), length == 8 ? keys.K1 : keys.K2));
      EXPECT_EQ(cmac(key, message, iv), expected) << length;
    }
  }
}

TEST(TdeaCmac, StartsItsChainFromTheCallersValueAndLeavesTheCodeThere) {
  RandomBytes random(54);
  for (const std::size_t keyLength : {16U, 24U}) {
    const Bytes key = random.bytes(keyLength);
    for (std::size_t length = 8; length < 300; ++length) {
      const Bytes message = random.bytes(length);
      DesBlock iv = random.array<8>();
      Bytes added = message;
      for (std::size_t i = 0; i < 8; ++i) added[i] = static_cast<unsigned char>(added[i] ^ iv[i]);
      DesBlock zero = {};
      const DesBlock mac = cmac(key, message, iv);
      ASSERT_EQ(mac, cmac(key, added, zero)) << length;
      ASSERT_EQ(iv, mac) << length;
    }
  }
}

TEST(TdeaCmac, WithAnyOtherKeyLengthIsZeroAndZeroesTheChainingValue) {
  const Bytes key(32, 0x42);
  for (const unsigned int keyLength : {0U, 8U, 15U, 17U, 23U, 25U, 32U}) {
    for (const unsigned int length : {0U, 5U, 8U, 40U}) {
      const Bytes message(length, 0x17);
      DesBlock mac = {9, 9, 9, 9, 9, 9, 9, 9};
      DesBlock iv = {1, 2, 3, 4, 5, 6, 7, 8};
      des3_computeCmac(message.data(), length, key.data(), keyLength, mac.data(), 0, iv.data());
      EXPECT_EQ(mac, DesBlock{}) << keyLength;
      EXPECT_EQ(iv, DesBlock{}) << keyLength;
    }
  }
}

TEST(TdeaCmac, TakesNoBytesOfAnEmptyMessageAndDoesNotReadItsReservedArgument) {
  const Bytes key(24, 0x42);
  DesBlock iv = {};
  const DesBlock expected = cmac(key, Bytes{}, iv);
  DesBlock mac = {};
  DesBlock otherIv = {};
  des3_computeCmac(nullptr, 0, key.data(), 24, mac.data(), 0xffffffff, otherIv.data());
  EXPECT_EQ(mac, expected);
}

TEST(TdeaCmac, DoesNotModifyTheMessage) {
  const Bytes message(40, 0x17);
  DesBlock iv = {};
  cmac(Bytes(24, 0x42), message, iv);
  EXPECT_EQ(message, Bytes(40, 0x17));
}

}  // namespace
