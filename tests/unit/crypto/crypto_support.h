// What the tests of the ciphers share.
#ifndef MVX2_TESTS_CRYPTO_SUPPORT_H
#define MVX2_TESTS_CRYPTO_SUPPORT_H

#include <mvx2/aes.h>

#include <algorithm>
#include <array>
#include <random>

#include "support/vector_file.h"

namespace mvx2::test {

using AesBlock = std::array<unsigned char, 16>;
using DesBlock = std::array<unsigned char, 8>;

// Random bytes that are the same in every run.
class RandomBytes {
 public:
  explicit RandomBytes(unsigned int seed) : m_generator(seed) {}

  unsigned int below(unsigned int bound) { return static_cast<unsigned int>(m_generator() % bound); }
  std::uint32_t word() { return static_cast<std::uint32_t>(m_generator()); }
  template <std::size_t size>
  std::array<unsigned char, size> array() {
    std::array<unsigned char, size> bytes;
    for (unsigned char& byte : bytes) byte = next();
    return bytes;
  }
  Bytes bytes(std::size_t length) {
    Bytes bytes(length);
    for (unsigned char& byte : bytes) byte = next();
    return bytes;
  }

 private:
  unsigned char next() { return static_cast<unsigned char>(m_generator() & 0xff); }

  std::mt19937 m_generator;
};

template <class Array>
Array arrayOf(const Bytes& bytes) {
  Array array = {};
  std::copy_n(bytes.begin(), std::min(bytes.size(), array.size()), array.begin());
  return array;
}

inline unsigned int aesRounds(unsigned int type) { return 10 + 2 * type; }
inline unsigned int aesKeyWords(unsigned int type) { return 4 + 2 * type; }
inline unsigned int aesScheduleWords(unsigned int type) { return 4 * (aesRounds(type) + 1); }

// Both schedules of a key; the type follows from its length.
struct AesKey {
  explicit AesKey(const Bytes& key) : type(static_cast<unsigned int>(key.size() - 16) / 8) {
    aes_KeyExpansion(type, key.data(), w.data(), aesKeyWords(type));
    aes_KeyInversion(type, w.data(), 0, dw.data());
  }

  unsigned int type;
  std::array<uint32_t, 61> w = {};
  std::array<uint32_t, 60> dw = {};
};

inline AesBlock aesEncrypted(const AesKey& key, const AesBlock& plainText) {
  AesBlock cipherText;
  AesBlock iv = {};
  aes_Cipher(key.type, plainText.data(), cipherText.data(), key.w.data(), iv.data());
  return cipherText;
}

inline AesBlock aesDecrypted(const AesKey& key, const AesBlock& cipherText) {
  AesBlock plainText;
  AesBlock iv = {};
  aes_InvCipher(key.type, cipherText.data(), plainText.data(), key.w.data(), iv.data());
  return plainText;
}

inline AesBlock aesDecryptedEquivalently(const AesKey& key, const AesBlock& cipherText) {
  AesBlock plainText;
  aes_EqInvCipher(key.type, cipherText.data(), plainText.data(), key.dw.data());
  return plainText;
}

}  // namespace mvx2::test

#endif
