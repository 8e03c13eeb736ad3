// DES, triple DES and the codes built on them against OpenSSL, with fixed seeds.
#include <gtest/gtest.h>
#include <mvx2/des.h>
#include <mvx2/des_mac.h>
#include <openssl/cmac.h>
#include <openssl/des.h>

#include <memory>

#include "unit/crypto/crypto_support.h"

using mvx2::test::Bytes;
using mvx2::test::DesBlock;
using mvx2::test::RandomBytes;

namespace {

constexpr int blocks = 20000;

// Their schedules of up to three keys; a two-key TDEA key ends with its first key.
struct TheirKey {
  explicit TheirKey(const Bytes& key) {
    for (std::size_t i = 0; i < 3; ++i) {
      DES_cblock block;
      std::copy_n(key.begin() + static_cast<long>(8 * i % key.size()), 8, block);
      DES_set_key_unchecked(&block, &schedules.at(i));
    }
  }
  std::array<DES_key_schedule, 3> schedules;
};

DesBlock theirBlock(const Bytes& key, DesBlock block, int direction) {
  TheirKey their(key);
  auto& s = their.schedules;
  auto* bytes = reinterpret_cast<DES_cblock*>(block.data());
  if (key.size() == 8) {
    DES_ecb_encrypt(bytes, bytes, s.data(), direction);
  } else {
    DES_ecb3_encrypt(bytes, bytes, s.data(), &s[1], &s[2], direction);
  }
  return block;
}

Bytes theirCbc(const Bytes& key, const Bytes& text, DesBlock& iv, int direction) {
  TheirKey their(key);
  auto& s = their.schedules;
  Bytes out(text.size());
  auto* chain = reinterpret_cast<DES_cblock*>(iv.data());
  const long length = static_cast<long>(text.size());
  if (key.size() == 8) {
    DES_ncbc_encrypt(text.data(), out.data(), length, s.data(), chain, direction);
  } else {
    DES_ede3_cbc_encrypt(text.data(), out.data(), length, s.data(), &s[1], &s[2], chain, direction);
  }
  return out;
}

// Our functions for a key of 8, 16 or 24 bytes.
struct OurKey {
  OurKey(const Bytes& key, bool encrypt) : single(key.size() == 8) {
    if (single) {
      encrypt ? des_setkey_enc(&ctx, key.data()) : des_setkey_dec(&ctx, key.data());
    } else if (key.size() == 16) {
      encrypt ? des3_set2key_enc(&ctx3, key.data()) : des3_set2key_dec(&ctx3, key.data());
    } else {
      encrypt ? des3_set3key_enc(&ctx3, key.data()) : des3_set3key_dec(&ctx3, key.data());
    }
  }

  DesBlock block(const DesBlock& in) {
    DesBlock out;
    single ? des_crypt_ecb(&ctx, in.data(), out.data()) : des3_crypt_ecb(&ctx3, in.data(), out.data());
    return out;
  }

  Bytes cbc(const Bytes& in, DesBlock& iv, int mode) {
    Bytes out(in.size());
    single ? des_crypt_cbc(&ctx, mode, in.size(), iv.data(), in.data(), out.data())
           : des3_crypt_cbc(&ctx3, mode, in.size(), iv.data(), in.data(), out.data());
    return out;
  }

  bool single;
  des_context ctx;
  des3_context ctx3;
};

class DesBesideOpenSsl : public testing::TestWithParam<std::size_t> {
 protected:
  Bytes randomKey() { return random.bytes(GetParam()); }
  RandomBytes random{static_cast<unsigned int>(200 + GetParam())};
};

TEST_P(DesBesideOpenSsl, EncryptsRandomBlocksAlike) {
  for (int i = 0; i < blocks; ++i) {
    const Bytes key = randomKey();
    const DesBlock block = random.array<8>();
    ASSERT_EQ(OurKey(key, true).block(block), theirBlock(key, block, DES_ENCRYPT));
  }
}

TEST_P(DesBesideOpenSsl, DecryptsRandomBlocksAlike) {
  for (int i = 0; i < blocks; ++i) {
    const Bytes key = randomKey();
    const DesBlock block = random.array<8>();
    ASSERT_EQ(OurKey(key, false).block(block), theirBlock(key, block, DES_DECRYPT));
  }
}

TEST_P(DesBesideOpenSsl, ChainsRandomTextsAlike) {
  for (int i = 0; i < 500; ++i) {
    const Bytes key = randomKey();
    const Bytes text = random.bytes(8UL * random.below(40));
    for (const int direction : {DES_ENCRYPT, DES_DECRYPT}) {
      DesBlock ourIv = random.array<8>();
      DesBlock theirIv = ourIv;
      OurKey ours(key, direction == DES_ENCRYPT);
      ASSERT_EQ(ours.cbc(text, ourIv, direction), theirCbc(key, text, theirIv, direction));
      ASSERT_EQ(ourIv, theirIv);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AllKeySizes, DesBesideOpenSsl, testing::Values(8U, 16U, 24U));

TEST(DesCbcMacBesideOpenSsl, AgreesOnEveryKeyLength) {
  RandomBytes random(210);
  for (unsigned int keyLength = 0; keyLength <= 32; ++keyLength) {
    const Bytes key = random.bytes(32);
    const Bytes theirKey(key.begin(), key.begin() + (keyLength == 16 ? 16 : 8));
    for (unsigned int length = 8; length <= 256; length += 8) {
      const Bytes message = random.bytes(length);
      DesBlock ourIv = random.array<8>();
      DesBlock theirIv = ourIv;
      std::array<unsigned char, 4> mac;
      des_ComputeMac(message.data(), length, key.data(), keyLength, mac.data(), 0, ourIv.data());
      theirCbc(theirKey, message, theirIv, DES_ENCRYPT);
      ASSERT_EQ(ourIv, theirIv) << keyLength << ", " << length;
      ASSERT_TRUE(std::equal(mac.begin(), mac.end(), theirIv.begin())) << keyLength << ", " << length;
    }
  }
}

DesBlock theirCmac(const Bytes& key, const Bytes& message) {
  const std::unique_ptr<CMAC_CTX, void (*)(CMAC_CTX*)> ctx(CMAC_CTX_new(), CMAC_CTX_free);
  CMAC_Init(ctx.get(), key.data(), key.size(), key.size() == 16 ? EVP_des_ede_cbc() : EVP_des_ede3_cbc(),
            nullptr);
  CMAC_Update(ctx.get(), message.data(), message.size());
  DesBlock mac = {};
  std::size_t length = 0;
  CMAC_Final(ctx.get(), mac.data(), &length);
  return mac;
}

TEST(TdeaCmacBesideOpenSsl, AgreesOnEveryLength) {
  RandomBytes random(211);
  for (const std::size_t keyLength : {16U, 24U}) {
    const Bytes key = random.bytes(keyLength);
    for (unsigned int length = 0; length <= 300; ++length) {
      const Bytes message = random.bytes(length);
      DesBlock iv = {};
      DesBlock mac;
      des3_computeCmac(message.data(), length, key.data(), static_cast<unsigned int>(keyLength), mac.data(),
                       0, iv.data());
      ASSERT_EQ(mac, theirCmac(key, message)) << keyLength << ", " << length;
    }
  }
}

}  // namespace
