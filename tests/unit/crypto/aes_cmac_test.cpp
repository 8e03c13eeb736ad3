#include <gtest/gtest.h>
#include <mvx2/aes_cmac.h>

#include <utility>

#include "unit/crypto/crypto_support.h"

using mvx2::test::AesBlock;
using mvx2::test::aesEncrypted;
using mvx2::test::AesKey;
using mvx2::test::arrayOf;
using mvx2::test::Bytes;
using mvx2::test::RandomBytes;
using mvx2::test::readVectors;
using mvx2::test::Vector;

namespace {

struct Cmac {
  explicit Cmac(Bytes bytes) : key(std::move(bytes)) { aes_GenerateSubKey(key.data(), K1.data(), K2.data()); }

  // The chaining value is taken and updated.
  AesBlock operator()(const Bytes& message, AesBlock& iv) const {
    AesBlock mac;
    aes_buildCmac(key.data(), K1.data(), K2.data(), message.data(),
                  static_cast<unsigned char>(message.size()), mac.data(), iv.data());
    return mac;
  }

  AesBlock operator()(const Bytes& message) const {
    AesBlock iv = {};
    return (*this)(message, iv);
  }

  Bytes key;
  AesBlock K1 = {};
  AesBlock K2 = {};
};

void expectPublished(const std::string& file, const std::string& titleStart) {
  for (const Vector& vector : readVectors(file, titleStart)) {
    SCOPED_TRACE(vector.title);
    const Cmac cmac(vector["key"]);
    if (vector.values.count("K1") != 0) {
      EXPECT_EQ(cmac.K1, arrayOf<AesBlock>(vector["K1"]));
      EXPECT_EQ(cmac.K2, arrayOf<AesBlock>(vector["K2"]));
    } else {
      EXPECT_EQ(cmac(vector["message"]), arrayOf<AesBlock>(vector["mac"]));
    }
  }
}

TEST(AesCmac, GivesTheSubkeysAndCodesOfRfc4493) { expectPublished("rfc4493.txt", ""); }

TEST(AesCmac, GivesTheSubkeysAndCodesOfSp80038b) { expectPublished("sp800-38b.txt", "AES-128"); }

TEST(AesCmac, LeavesTheCodeInTheChainingValue) {
  RandomBytes random(30);
  const Cmac cmac(random.bytes(16));
  for (std::size_t length = 0; length < 256; ++length) {
    AesBlock iv = random.array<16>();
    const AesBlock mac = cmac(random.bytes(length), iv);
    ASSERT_EQ(iv, mac) << length;
  }
}

TEST(AesCmac, StartsItsChainFromTheCallersValue) {
  RandomBytes random(31);
  const Cmac cmac(random.bytes(16));
  for (std::size_t length = 16; length < 256; ++length) {
    AesBlock iv = random.array<16>();
    Bytes message = random.bytes(length);
    Bytes sum = message;
    for (std::size_t i = 0; i < 16; ++i) sum[i] = static_cast<unsigned char>(sum[i] ^ iv[i]);
    ASSERT_EQ(cmac(message, iv), cmac(sum)) << length;
  }
}

// One block of padding at most, so that the code is one encryption: of message, padding, subkey and chaining
// value.
TEST(AesCmac, OfAShortMessageIsOneEncryption) {
  RandomBytes random(32);
  const Cmac cmac(random.bytes(16));
  const AesKey key(cmac.key);
  for (std::size_t length = 0; length <= 16; ++length) {
    AesBlock iv = random.array<16>();
    const Bytes message = random.bytes(length);
    auto block = arrayOf<AesBlock>(message);
    if (length < 16) block[length] = 0x80;
    for (std::size_t i = 0; i < 16; ++i) {
      block[i] = static_cast<unsigned char>(block[i] ^ iv[i] ^ (length == 16 ? cmac.K1[i] : cmac.K2[i]));
    }
    ASSERT_EQ(cmac(message, iv), aesEncrypted(key, block)) << length;
  }
}

TEST(AesCmac, UsesTheSubkeysOfTheCaller) {
  const Bytes message(16, 0x11);
  Cmac cmac(Bytes(16, 0x22));
  const AesBlock before = cmac(message);
  cmac.K1[15] ^= 1;
  EXPECT_NE(cmac(message), before);
}

TEST(AesCmac, DoesNotModifyTheMessage) {
  RandomBytes random(33);
  const Cmac cmac(random.bytes(16));
  for (const std::size_t length : {1U, 16U, 40U, 48U, 255U}) {
    const Bytes message(length, 0x17);
    cmac(message);
    EXPECT_EQ(message, Bytes(length, 0x17));
  }
}

TEST(AesCmac, TakesNoBytesOfAnEmptyMessage) {
  const Cmac cmac(Bytes(16, 0x33));
  AesBlock iv = {};
  AesBlock mac;
  aes_buildCmac(cmac.key.data(), cmac.K1.data(), cmac.K2.data(), nullptr, 0, mac.data(), iv.data());
  EXPECT_EQ(mac, cmac(Bytes{}));
}

TEST(AesCmac, MayReadItsMessageFromTheChainingValue) {
  const Cmac cmac(Bytes(16, 0x44));
  AesBlock iv = {1, 2, 3, 4, 5};
  const Bytes message(iv.begin(), iv.end());
  AesBlock separateIv = iv;
  const AesBlock expected = cmac(message, separateIv);
  AesBlock mac;
  aes_buildCmac(cmac.key.data(), cmac.K1.data(), cmac.K2.data(), iv.data(), 16, mac.data(), iv.data());
  EXPECT_EQ(mac, expected);
}

TEST(AesCmac, ValidationAcceptsAlways) {
  EXPECT_EQ(aes_IsvalidCmac(), 1);
  const Cmac cmac(Bytes(16, 0x55));
  cmac(Bytes(20, 0x66));
  EXPECT_EQ(aes_IsvalidCmac(), 1);
}

}  // namespace
