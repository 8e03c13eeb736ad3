#include <mvx2/des.h>
#include <mvx2/des_mac.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "crypto/secure.h"

using mvx2::Wiper;

namespace {

using Block = std::array<unsigned char, 8>;

int encrypt(des_context& ctx, std::size_t length, Block& iv, const unsigned char* in, unsigned char* out) {
  return des_crypt_cbc(&ctx, DES_ENCRYPT, length, iv.data(), in, out);
}

int encrypt(des3_context& ctx, std::size_t length, Block& iv, const unsigned char* in, unsigned char* out) {
  return des3_crypt_cbc(&ctx, DES_ENCRYPT, length, iv.data(), in, out);
}

// Runs whole blocks through CBC; of the ciphertext only the last block is kept, in the chaining value.
template <class Context>
void chain(Context& ctx, Block& value, const unsigned char* input, std::size_t length) {
  std::array<unsigned char, 64> cipherText;
  const Wiper wipeCipherText(cipherText);
  while (length > 0) {
    const std::size_t step = std::min(length, cipherText.size());
    encrypt(ctx, step, value, input, cipherText.data());
    input += step;
    length -= step;
  }
}

void setTdeaKey(des3_context& ctx, const unsigned char* key, unsigned int keyLength) {
  if (keyLength == 24) {
    des3_set3key_enc(&ctx, key);
  } else {
    des3_set2key_enc(&ctx, key);
  }
}

bool isTdeaKeyLength(unsigned int keyLength) { return keyLength == 16 || keyLength == 24; }

// in * x in the field of 2^64 elements (SP 800-38B, section 6.1).
Block doubled(const Block& in) {
  Block out;
  for (unsigned int i = 0; i < 7; ++i) out[i] = static_cast<unsigned char>((in[i] << 1) | (in[i + 1] >> 7));
  out[7] = static_cast<unsigned char>((in[7] << 1) ^ ((in[0] >> 7) * 0x1b));
  return out;
}

struct SubKeys {
  Block K1;
  Block K2;
};

template <class Context>
void deriveSubKeys(Context& ctx, SubKeys& keys) {
  Block L = {};
  const Wiper wipeL(L);
  constexpr Block zero = {};
  chain(ctx, L, zero.data(), zero.size());
  keys.K1 = doubled(L);
  keys.K2 = doubled(keys.K1);
}

// The last block of a message: `rest` bytes, 0 to 8, padded unless they fill it.
Block lastBlock(const unsigned char* bytes, std::size_t rest, const SubKeys& keys) {
  Block block = {};
  if (rest > 0) std::memcpy(block.data(), bytes, rest);
  if (rest < block.size()) block[rest] = 0x80;
  const Block& key = rest == block.size() ? keys.K1 : keys.K2;
  for (unsigned int i = 0; i < 8; ++i) block[i] = static_cast<unsigned char>(block[i] ^ key[i]);
  return block;
}

void cmac(const unsigned char* message, std::size_t length, const unsigned char* key, unsigned int keyLength,
          Block& value) {
  des3_context ctx;
  const Wiper wipeSchedule(ctx);
  setTdeaKey(ctx, key, keyLength);
  SubKeys keys;
  const Wiper wipeKeys(keys);
  deriveSubKeys(ctx, keys);
  const std::size_t before = length == 0 ? 0 : (length - 1) / 8 * 8;
  chain(ctx, value, message, before);
  Block last = lastBlock(message + before, length - before, keys);
  const Wiper wipeLast(last);
  chain(ctx, value, last.data(), last.size());
}

template <class Context>
void cbcMac(Context& ctx, const unsigned char* input, unsigned int length, unsigned char* mac,
            unsigned char* iv) {
  Block value;
  std::memcpy(value.data(), iv, value.size());
  chain(ctx, value, input, length);
  std::memcpy(iv, value.data(), value.size());
  std::memcpy(mac, value.data(), 4);
}

}  // namespace

void des_ComputeMac(const unsigned char* input, unsigned int inputLength, const unsigned char* key,
                    unsigned int keyLength, unsigned char mac[4], unsigned int /*reserved*/,
                    unsigned char iv[8]) {
  if (inputLength == 0 || inputLength % 8 != 0) {
    std::memset(mac, 0, 4);
    return;
  }
  if (keyLength == 16) {
    des3_context ctx;
    const Wiper wipeSchedule(ctx);
    setTdeaKey(ctx, key, keyLength);
    cbcMac(ctx, input, inputLength, mac, iv);
  } else {
    des_context ctx;
    const Wiper wipeSchedule(ctx);
    des_setkey_enc(&ctx, key);
    cbcMac(ctx, input, inputLength, mac, iv);
  }
}

void des3_cmac_subkey_generation(const unsigned char* key, unsigned int keyLength, unsigned char K1[8],
                                 unsigned char K2[8]) {
  SubKeys keys;
  const Wiper wipeKeys(keys);
  if (isTdeaKeyLength(keyLength)) {
    des3_context ctx;
    const Wiper wipeSchedule(ctx);
    setTdeaKey(ctx, key, keyLength);
    deriveSubKeys(ctx, keys);
  } else {
    des_context ctx;
    const Wiper wipeSchedule(ctx);
    des_setkey_enc(&ctx, key);
    deriveSubKeys(ctx, keys);
  }
  std::memcpy(K1, keys.K1.data(), keys.K1.size());
  std::memcpy(K2, keys.K2.data(), keys.K2.size());
}

void des3_computeCmac(const unsigned char* message, unsigned int messageLength, const unsigned char* key,
                      unsigned int keyLength, unsigned char mac[8], unsigned int /*reserved*/,
                      unsigned char iv[8]) {
  Block value = {};
  if (isTdeaKeyLength(keyLength)) {
    std::memcpy(value.data(), iv, value.size());
    cmac(message, messageLength, key, keyLength, value);
  }
  std::memcpy(mac, value.data(), value.size());
  std::memcpy(iv, value.data(), value.size());
}
