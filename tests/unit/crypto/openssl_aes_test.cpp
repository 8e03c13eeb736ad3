// AES and AES-CMAC against OpenSSL, with fixed seeds.
#include <gtest/gtest.h>
#include <mvx2/aes_cmac.h>
#include <openssl/aes.h>
#include <openssl/cmac.h>

#include <memory>

#include "unit/crypto/crypto_support.h"

using mvx2::test::AesBlock;
using mvx2::test::aesDecrypted;
using mvx2::test::aesDecryptedEquivalently;
using mvx2::test::aesEncrypted;
using mvx2::test::AesKey;
using mvx2::test::Bytes;
using mvx2::test::RandomBytes;

namespace {

constexpr int blocks = 20000;

int bitsOf(const Bytes& key) { return static_cast<int>(key.size() * 8); }

struct TheirKey {
  explicit TheirKey(const Bytes& key) {
    AES_set_encrypt_key(key.data(), bitsOf(key), &encryption);
    AES_set_decrypt_key(key.data(), bitsOf(key), &decryption);
  }
  AES_KEY encryption;
  AES_KEY decryption;
};

class AesBesideOpenSsl : public testing::TestWithParam<unsigned int> {
 protected:
  Bytes randomKey() { return random.bytes(std::size_t{16} + std::size_t{8} * GetParam()); }
  RandomBytes random{100 + GetParam()};
};

TEST_P(AesBesideOpenSsl, EncryptsRandomBlocksAlike) {
  for (int i = 0; i < blocks; ++i) {
    const Bytes key = randomKey();
    const AesBlock plainText = random.array<16>();
    AesBlock expected;
    const TheirKey theirs(key);
    AES_encrypt(plainText.data(), expected.data(), &theirs.encryption);
    ASSERT_EQ(aesEncrypted(AesKey(key), plainText), expected);
  }
}

TEST_P(AesBesideOpenSsl, DecryptsRandomBlocksAlike) {
  for (int i = 0; i < blocks; ++i) {
    const Bytes key = randomKey();
    const AesBlock cipherText = random.array<16>();
    AesBlock expected;
    const TheirKey theirs(key);
    AES_decrypt(cipherText.data(), expected.data(), &theirs.decryption);
    const AesKey ours(key);
    ASSERT_EQ(aesDecrypted(ours, cipherText), expected);
    ASSERT_EQ(aesDecryptedEquivalently(ours, cipherText), expected);
  }
}

TEST_P(AesBesideOpenSsl, ChainsRandomTextsAlike) {
  for (int i = 0; i < 500; ++i) {
    const Bytes key = randomKey();
    const AesKey ours(key);
    const TheirKey theirs(key);
    const std::size_t length = 16UL * (1 + random.below(20));
    const Bytes plainText = random.bytes(length);
    const AesBlock start = random.array<16>();

    AesBlock ourIv = start;
    AesBlock theirIv = start;
    Bytes ourText(length);
    Bytes theirText(length);
    for (std::size_t at = 0; at < length; at += 16) {
      aes_Cipher(ours.type, plainText.data() + at, ourText.data() + at, ours.w.data(), ourIv.data());
    }
    AES_cbc_encrypt(plainText.data(), theirText.data(), length, &theirs.encryption, theirIv.data(),
                    AES_ENCRYPT);
    ASSERT_EQ(ourText, theirText);
    ASSERT_EQ(ourIv, theirIv);

    ourIv = start;
    Bytes back(length);
    for (std::size_t at = 0; at < length; at += 16) {
      aes_InvCipher(ours.type, ourText.data() + at, back.data() + at, ours.w.data(), ourIv.data());
    }
    ASSERT_EQ(back, plainText);
  }
}

INSTANTIATE_TEST_SUITE_P(AllKeySizes, AesBesideOpenSsl, testing::Values(0U, 1U, 2U));

AesBlock theirCmac(const Bytes& key, const Bytes& message) {
  const std::unique_ptr<CMAC_CTX, void (*)(CMAC_CTX*)> ctx(CMAC_CTX_new(), CMAC_CTX_free);
  CMAC_Init(ctx.get(), key.data(), key.size(), EVP_aes_128_cbc(), nullptr);
  CMAC_Update(ctx.get(), message.data(), message.size());
  AesBlock mac = {};
  std::size_t length = 0;
  CMAC_Final(ctx.get(), mac.data(), &length);
  return mac;
}

TEST(AesCmacBesideOpenSsl, AgreesOnEveryLength) {
  RandomBytes random(110);
  for (int run = 0; run < 20; ++run) {
    const Bytes key = random.bytes(16);
    AesBlock K1;
    AesBlock K2;
    aes_GenerateSubKey(key.data(), K1.data(), K2.data());
    for (unsigned int length = 0; length < 256; ++length) {
      const Bytes message = random.bytes(length);
      AesBlock iv = {};
      AesBlock mac;
      aes_buildCmac(key.data(), K1.data(), K2.data(), message.data(), static_cast<unsigned char>(length),
                    mac.data(), iv.data());
      ASSERT_EQ(mac, theirCmac(key, message)) << length;
    }
  }
}

}  // namespace
