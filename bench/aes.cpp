// AES and AES-CMAC beside the table-driven AES of mbed TLS. Each block depends on the one before, as in a
// chain.
#include <mbedtls/aes.h>
#include <mbedtls/cipher.h>
#include <mbedtls/cmac.h>
#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>

#include <array>

#include "paired.h"

namespace {

using Block = std::array<unsigned char, 16>;
using mvx2::bench::paired;

constexpr std::array<unsigned char, 32> key = {
    0x60, 0x3d, 0xeb, 0x10, 0x15, 0xca, 0x71, 0xbe, 0x2b, 0x73, 0xae, 0xf0, 0x85, 0x7d, 0x77, 0x81,
    0x1f, 0x35, 0x2c, 0x07, 0x3b, 0x61, 0x08, 0xd7, 0x2d, 0x98, 0x10, 0xa3, 0x09, 0x14, 0xdf, 0xf4};

// The argument of the benchmarks: the key-size type.
unsigned int typeOf(const benchmark::State& state) { return static_cast<unsigned int>(state.range(0)); }
unsigned int wordsOf(unsigned int type) { return 4 + 2 * type; }
unsigned int bitsOf(unsigned int type) { return 32 * wordsOf(type); }

class TheirKey {
 public:
  TheirKey() { mbedtls_aes_init(&m_context); }
  TheirKey(const TheirKey&) = delete;
  TheirKey(TheirKey&&) = delete;
  TheirKey& operator=(const TheirKey&) = delete;
  TheirKey& operator=(TheirKey&&) = delete;
  ~TheirKey() { mbedtls_aes_free(&m_context); }
  mbedtls_aes_context* get() { return &m_context; }

 private:
  mbedtls_aes_context m_context;
};

struct OurKey {
  explicit OurKey(unsigned int type) {
    aes_KeyExpansion(type, key.data(), w.data(), wordsOf(type));
    aes_KeyInversion(type, w.data(), 0, dw.data());
  }
  std::array<uint32_t, 61> w = {};
  std::array<uint32_t, 60> dw;
};

void encryptBlock(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  OurKey ours(type);
  TheirKey theirs;
  mbedtls_aes_setkey_enc(theirs.get(), key.data(), bitsOf(type));
  Block ourBlock = {};
  Block iv = {};
  Block theirBlock = {};
  paired(
      state, [&] { aes_Cipher(type, ourBlock.data(), ourBlock.data(), ours.w.data(), iv.data()); },
      [&] {
        mbedtls_aes_crypt_ecb(theirs.get(), MBEDTLS_AES_ENCRYPT, theirBlock.data(), theirBlock.data());
      });
}
BENCHMARK(encryptBlock)->DenseRange(0, 2);

void encryptBlockAgainstCbc(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  OurKey ours(type);
  TheirKey theirs;
  mbedtls_aes_setkey_enc(theirs.get(), key.data(), bitsOf(type));
  Block ourBlock = {};
  Block ourIv = {};
  Block theirBlock = {};
  Block theirIv = {};
  paired(
      state, [&] { aes_Cipher(type, ourBlock.data(), ourBlock.data(), ours.w.data(), ourIv.data()); },
      [&] {
        mbedtls_aes_crypt_cbc(theirs.get(), MBEDTLS_AES_ENCRYPT, 16, theirIv.data(), theirBlock.data(),
                              theirBlock.data());
      });
}
BENCHMARK(encryptBlockAgainstCbc)->DenseRange(0, 2);

// Both sides with the schedule of the equivalent inverse cipher.
void decryptBlockEquivalent(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  OurKey ours(type);
  TheirKey theirs;
  mbedtls_aes_setkey_dec(theirs.get(), key.data(), bitsOf(type));
  Block ourBlock = {};
  Block theirBlock = {};
  paired(
      state, [&] { aes_EqInvCipher(type, ourBlock.data(), ourBlock.data(), ours.dw.data()); },
      [&] {
        mbedtls_aes_crypt_ecb(theirs.get(), MBEDTLS_AES_DECRYPT, theirBlock.data(), theirBlock.data());
      });
}
BENCHMARK(decryptBlockEquivalent)->DenseRange(0, 2);

// Ours from the forward schedule, theirs with its inverse made beforehand.
void decryptBlockStraight(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  OurKey ours(type);
  TheirKey theirs;
  mbedtls_aes_setkey_dec(theirs.get(), key.data(), bitsOf(type));
  Block ourBlock = {};
  Block iv = {};
  Block theirBlock = {};
  paired(
      state, [&] { aes_InvCipher(type, ourBlock.data(), ourBlock.data(), ours.w.data(), iv.data()); },
      [&] {
        mbedtls_aes_crypt_ecb(theirs.get(), MBEDTLS_AES_DECRYPT, theirBlock.data(), theirBlock.data());
      });
}
BENCHMARK(decryptBlockStraight)->DenseRange(0, 2);

void decryptBlockAgainstCbc(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  OurKey ours(type);
  TheirKey theirs;
  mbedtls_aes_setkey_dec(theirs.get(), key.data(), bitsOf(type));
  Block ourBlock = {};
  Block ourIv = {};
  Block theirBlock = {};
  Block theirIv = {};
  paired(
      state, [&] { aes_InvCipher(type, ourBlock.data(), ourBlock.data(), ours.w.data(), ourIv.data()); },
      [&] {
        mbedtls_aes_crypt_cbc(theirs.get(), MBEDTLS_AES_DECRYPT, 16, theirIv.data(), theirBlock.data(),
                              theirBlock.data());
      });
}
BENCHMARK(decryptBlockAgainstCbc)->DenseRange(0, 2);

void expandKey(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  std::array<uint32_t, 61> w = {};
  TheirKey theirs;
  paired(
      state,
      [&] {
        aes_KeyExpansion(type, key.data(), w.data(), wordsOf(type));
        benchmark::ClobberMemory();
      },
      [&] {
        mbedtls_aes_setkey_enc(theirs.get(), key.data(), bitsOf(type));
        benchmark::ClobberMemory();
      });
}
BENCHMARK(expandKey)->DenseRange(0, 2);

void expandKeyForDecryption(benchmark::State& state) {
  const unsigned int type = typeOf(state);
  std::array<uint32_t, 61> w = {};
  std::array<uint32_t, 60> dw;
  TheirKey theirs;
  paired(
      state,
      [&] {
        aes_KeyExpansion(type, key.data(), w.data(), wordsOf(type));
        aes_KeyInversion(type, w.data(), 0, dw.data());
        benchmark::ClobberMemory();
      },
      [&] {
        mbedtls_aes_setkey_dec(theirs.get(), key.data(), bitsOf(type));
        benchmark::ClobberMemory();
      });
}
BENCHMARK(expandKeyForDecryption)->DenseRange(0, 2);

constexpr unsigned char messageLength = 40;
using Message = std::array<unsigned char, messageLength>;

const mbedtls_cipher_info_t* aes128() { return mbedtls_cipher_info_from_type(MBEDTLS_CIPHER_AES_128_ECB); }

// Ours with the subkeys ready, theirs with the key ready: aes_buildCmac() always expands the key, mbed TLS
// always derives the subkeys.
void macWithKeyReady(benchmark::State& state) {
  Block K1;
  Block K2;
  aes_GenerateSubKey(key.data(), K1.data(), K2.data());
  mbedtls_cipher_context_t context;
  mbedtls_cipher_init(&context);
  mbedtls_cipher_setup(&context, aes128());
  mbedtls_cipher_cmac_starts(&context, key.data(), 128);
  Message ourMessage = {};
  Message theirMessage = {};
  Block iv = {};
  paired(
      state,
      [&] {
        aes_buildCmac(key.data(), K1.data(), K2.data(), ourMessage.data(), messageLength, ourMessage.data(),
                      iv.data());
      },
      [&] {
        mbedtls_cipher_cmac_update(&context, theirMessage.data(), messageLength);
        mbedtls_cipher_cmac_finish(&context, theirMessage.data());
        mbedtls_cipher_cmac_reset(&context);
      });
  mbedtls_cipher_free(&context);
}
BENCHMARK(macWithKeyReady);

// Everything from the bare key on both sides.
void macFromKey(benchmark::State& state) {
  Block K1;
  Block K2;
  Message ourMessage = {};
  Message theirMessage = {};
  Block iv = {};
  paired(
      state,
      [&] {
        aes_GenerateSubKey(key.data(), K1.data(), K2.data());
        aes_buildCmac(key.data(), K1.data(), K2.data(), ourMessage.data(), messageLength, ourMessage.data(),
                      iv.data());
      },
      [&] {
        mbedtls_cipher_cmac(aes128(), key.data(), 128, theirMessage.data(), messageLength,
                            theirMessage.data());
      });
}
BENCHMARK(macFromKey);

}  // namespace

BENCHMARK_MAIN();
