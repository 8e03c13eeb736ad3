#include <gtest/gtest.h>
#include <mvx2/des.h>

#include "unit/crypto/crypto_support.h"

using mvx2::test::arrayOf;
using mvx2::test::Bytes;
using mvx2::test::DesBlock;
using mvx2::test::RandomBytes;
using mvx2::test::readVectors;
using mvx2::test::Vector;

namespace {

// One block with a key of 8, 16 or 24 bytes.
DesBlock crypted(const Bytes& key, const DesBlock& in, bool encrypt) {
  DesBlock out = {};
  if (key.size() == 8) {
    des_context ctx;
    EXPECT_EQ(encrypt ? des_setkey_enc(&ctx, key.data()) : des_setkey_dec(&ctx, key.data()), 0);
    EXPECT_EQ(des_crypt_ecb(&ctx, in.data(), out.data()), 0);
    return out;
  }
  des3_context ctx;
  if (key.size() == 16) {
    EXPECT_EQ(encrypt ? des3_set2key_enc(&ctx, key.data()) : des3_set2key_dec(&ctx, key.data()), 0);
  } else {
    EXPECT_EQ(encrypt ? des3_set3key_enc(&ctx, key.data()) : des3_set3key_dec(&ctx, key.data()), 0);
  }
  EXPECT_EQ(des3_crypt_ecb(&ctx, in.data(), out.data()), 0);
  return out;
}

Bytes crypted(const Bytes& key, const Bytes& in, bool encrypt) {
  Bytes out;
  for (std::size_t i = 0; i < in.size(); i += 8) {
    const DesBlock block =
        crypted(key, arrayOf<DesBlock>(Bytes(in.begin() + static_cast<long>(i), in.end())), encrypt);
    out.insert(out.end(), block.begin(), block.end());
  }
  return out;
}

Bytes repeated(const Bytes& key, int times) {
  Bytes keys;
  for (int i = 0; i < times; ++i) keys.insert(keys.end(), key.begin(), key.end());
  return keys;
}

void expectPublished(const std::string& file, const std::string& titleStart, int keyTimes) {
  for (const Vector& vector : readVectors(file, titleStart)) {
    SCOPED_TRACE(vector.title);
    const Bytes key = repeated(vector["key"], keyTimes);
    EXPECT_EQ(crypted(key, vector["plaintext"], true), vector["ciphertext"]);
    EXPECT_EQ(crypted(key, vector["ciphertext"], false), vector["plaintext"]);
  }
}

TEST(Des, GivesThePublishedBlocksOfFips81) { expectPublished("fips-81.txt", "ECB", 1); }

TEST(Des, GivesTheKnownAnswersOfSp80017) { expectPublished("sp800-17.txt", "", 1); }

TEST(TwoKeyTdea, GivesTheKnownAnswersOfSp80020) { expectPublished("sp800-17.txt", "", 2); }

TEST(ThreeKeyTdea, GivesTheKnownAnswersOfSp80020) { expectPublished("sp800-17.txt", "", 3); }

TEST(ThreeKeyTdea, GivesThePublishedBlocksOfSp80067) { expectPublished("sp800-67.txt", "", 1); }

TEST(TwoKeyTdea, IsThreeKeyTdeaWithTheFirstKeyAgain) {
  RandomBytes random(40);
  const Bytes key = random.bytes(16);
  Bytes threeKeys = key;
  threeKeys.insert(threeKeys.end(), key.begin(), key.begin() + 8);
  const DesBlock block = random.array<8>();
  EXPECT_EQ(crypted(key, block, true), crypted(threeKeys, block, true));
  EXPECT_EQ(crypted(key, block, false), crypted(threeKeys, block, false));
}

TEST(Des, CbcGivesThePublishedTextsOfFips81) {
  const Vector vector = readVectors("fips-81.txt", "CBC").front();
  des_context ctx;
  des_setkey_enc(&ctx, vector["key"].data());
  auto iv = arrayOf<DesBlock>(vector["iv"]);
  Bytes out(24);
  EXPECT_EQ(des_crypt_cbc(&ctx, DES_ENCRYPT, 24, iv.data(), vector["plaintext"].data(), out.data()), 0);
  EXPECT_EQ(out, vector["ciphertext"]);

  des_setkey_dec(&ctx, vector["key"].data());
  iv = arrayOf<DesBlock>(vector["iv"]);
  EXPECT_EQ(des_crypt_cbc(&ctx, DES_DECRYPT, 24, iv.data(), vector["ciphertext"].data(), out.data()), 0);
  EXPECT_EQ(out, vector["plaintext"]);
}

// The CBC functions of DES and TDEA, to be tested alike.
struct DesCbc {
  using Context = des_context;
  static void setKey(Context& ctx, const unsigned char* key, bool encrypt) {
    encrypt ? des_setkey_enc(&ctx, key) : des_setkey_dec(&ctx, key);
  }
  static constexpr auto crypt = des_crypt_cbc;
};

struct TdeaCbc {
  using Context = des3_context;
  static void setKey(Context& ctx, const unsigned char* key, bool encrypt) {
    encrypt ? des3_set3key_enc(&ctx, key) : des3_set3key_dec(&ctx, key);
  }
  static constexpr auto crypt = des3_crypt_cbc;
};

template <class Cbc>
class CbcMode : public testing::Test {
 protected:
  CbcMode() {
    Cbc::setKey(encryption, key.data(), true);
    Cbc::setKey(decryption, key.data(), false);
  }

  RandomBytes random{41};
  Bytes key = random.bytes(24);
  typename Cbc::Context encryption;
  typename Cbc::Context decryption;
  DesBlock iv = random.array<8>();
  const DesBlock startIv = iv;
  const Bytes input = random.bytes(64);
  Bytes output = Bytes(64, 0x5a);
};

using BothCiphers = testing::Types<DesCbc, TdeaCbc>;
TYPED_TEST_SUITE(CbcMode, BothCiphers);

TYPED_TEST(CbcMode, RefusesALengthThatIsNoMultipleOfEightAndTouchesNothing) {
  for (const std::size_t length : {1U, 4U, 7U, 12U, 63U}) {
    EXPECT_EQ(TypeParam::crypt(&this->encryption, DES_ENCRYPT, length, this->iv.data(), this->input.data(),
                               this->output.data()),
              1);
    EXPECT_EQ(TypeParam::crypt(&this->decryption, DES_DECRYPT, length, this->iv.data(), this->input.data(),
                               this->output.data()),
              1);
  }
  EXPECT_EQ(this->iv, this->startIv);
  EXPECT_EQ(this->output, Bytes(64, 0x5a));
}

TYPED_TEST(CbcMode, AcceptsNoBytesAtAll) {
  EXPECT_EQ(TypeParam::crypt(&this->encryption, DES_ENCRYPT, 0, this->iv.data(), this->input.data(),
                             this->output.data()),
            0);
  EXPECT_EQ(this->iv, this->startIv);
}

TYPED_TEST(CbcMode, EncryptionLeavesTheLastCiphertextBlockInTheChainingValue) {
  TypeParam::crypt(&this->encryption, DES_ENCRYPT, 64, this->iv.data(), this->input.data(),
                   this->output.data());
  EXPECT_TRUE(std::equal(this->iv.begin(), this->iv.end(), this->output.begin() + 56));
}

TYPED_TEST(CbcMode, DecryptionLeavesTheLastInputBlockInTheChainingValue) {
  TypeParam::crypt(&this->decryption, DES_DECRYPT, 64, this->iv.data(), this->input.data(),
                   this->output.data());
  EXPECT_TRUE(std::equal(this->iv.begin(), this->iv.end(), this->input.begin() + 56));
}

TYPED_TEST(CbcMode, AnyModeOtherThanOneDecrypts) {
  TypeParam::crypt(&this->encryption, DES_ENCRYPT, 64, this->iv.data(), this->input.data(),
                   this->output.data());
  for (const int mode : {0, 2, -1}) {
    Bytes back(64);
    this->iv = this->startIv;
    TypeParam::crypt(&this->decryption, mode, 64, this->iv.data(), this->output.data(), back.data());
    EXPECT_EQ(back, this->input) << mode;
  }
}

TYPED_TEST(CbcMode, WorksInPlaceBothWays) {
  TypeParam::crypt(&this->encryption, DES_ENCRYPT, 64, this->iv.data(), this->input.data(),
                   this->output.data());
  Bytes text = this->input;
  this->iv = this->startIv;
  TypeParam::crypt(&this->encryption, DES_ENCRYPT, 64, this->iv.data(), text.data(), text.data());
  EXPECT_EQ(text, this->output);
  this->iv = this->startIv;
  TypeParam::crypt(&this->decryption, DES_DECRYPT, 64, this->iv.data(), text.data(), text.data());
  EXPECT_EQ(text, this->input);
}

TYPED_TEST(CbcMode, InPiecesGivesWhatOneCallGives) {
  TypeParam::crypt(&this->encryption, DES_ENCRYPT, 64, this->iv.data(), this->input.data(),
                   this->output.data());
  const DesBlock endIv = this->iv;
  Bytes pieces(64);
  this->iv = this->startIv;
  std::size_t done = 0;
  for (const std::size_t length : {8U, 24U, 0U, 32U}) {
    TypeParam::crypt(&this->encryption, DES_ENCRYPT, length, this->iv.data(), this->input.data() + done,
                     pieces.data() + done);
    done += length;
  }
  EXPECT_EQ(pieces, this->output);
  EXPECT_EQ(this->iv, endIv);
}

TYPED_TEST(CbcMode, SettingAKeyDoesNotRecordTheDirection) {
  typename TypeParam::Context ctx = {};
  ctx.mode = 0x12345678;
  TypeParam::setKey(ctx, this->key.data(), true);
  EXPECT_EQ(ctx.mode, 0x12345678U);
  TypeParam::setKey(ctx, this->key.data(), false);
  EXPECT_EQ(ctx.mode, 0x12345678U);
}

TEST(DesContexts, HaveTheirFixedLayout) {
  EXPECT_EQ(sizeof(des_context), 33 * 4U);
  EXPECT_EQ(sizeof(des3_context), 97 * 4U);
  EXPECT_EQ(offsetof(des_context, sk), 4U);
  EXPECT_EQ(offsetof(des3_context, sk), 4U);
}

TEST(DesContexts, SettingAKeyStaysWithinThem) {
  struct Guarded {
    des_context ctx;
    des3_context ctx3;
    uint32_t after;
  } guarded = {};
  guarded.after = 0xa5a5a5a5;
  const Bytes key(24, 0x3b);
  des_setkey_enc(&guarded.ctx, key.data());
  EXPECT_EQ(guarded.ctx3.mode, 0U);
  des3_set3key_enc(&guarded.ctx3, key.data());
  EXPECT_EQ(guarded.after, 0xa5a5a5a5U);
}

TEST(DesParity, IsSetToOddInTheLowestBitOfEveryByte) {
  for (unsigned int value = 0; value < 256; ++value) {
    DesBlock key;
    key.fill(static_cast<unsigned char>(value));
    des_key_set_parity(key.data());
    for (const unsigned char byte : key) {
      EXPECT_EQ(byte >> 1, value >> 1);
      EXPECT_EQ(__builtin_popcount(byte) % 2, 1) << value;
    }
  }
}

TEST(DesParity, CheckFindsAnyByteThatLacksIt) {
  DesBlock key;
  key.fill(0x5b);
  EXPECT_EQ(des_key_check_key_parity(key.data()), 0);
  for (unsigned char& byte : key) {
    byte ^= 1;
    EXPECT_EQ(des_key_check_key_parity(key.data()), 1);
    byte ^= 1;
  }
}

TEST(WeakDesKeys, AreThoseOfFips74) {
  for (const Vector& vector : readVectors("fips-74.txt")) {
    EXPECT_EQ(des_key_check_weak(vector["key"].data()), 1) << testing::PrintToString(vector["key"]);
  }
}

TEST(WeakDesKeys, AreInvertedByTheirPartners) {
  const DesBlock block = {1, 2, 3, 4, 5, 6, 7, 8};
  for (const Vector& vector : readVectors("fips-74.txt")) {
    EXPECT_EQ(crypted(vector["inverse"], crypted(vector["key"], block, true), true), block)
        << testing::PrintToString(vector["key"]);
  }
}

TEST(WeakDesKeys, AreNoLongerWeakWithAnyBitChanged) {
  for (const Vector& vector : readVectors("fips-74.txt")) {
    for (unsigned int bit = 0; bit < 64; ++bit) {
      Bytes key = vector["key"];
      key[bit / 8] = static_cast<unsigned char>(key[bit / 8] ^ (1U << (bit % 8)));
      EXPECT_EQ(des_key_check_weak(key.data()), 0) << testing::PrintToString(key);
    }
  }
}

}  // namespace
