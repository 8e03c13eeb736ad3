#include "sam_crypto.h"

#include <mbedtls/aes.h>
#include <mbedtls/cipher.h>
#include <mbedtls/cmac.h>

#include <algorithm>
#include <array>

namespace mvx2sim {

namespace {

constexpr unsigned key_bits = 128;

class Aes {
 public:
  Aes() { mbedtls_aes_init(&m_context); }
  Aes(const Aes&) = delete;
  Aes(Aes&&) = delete;
  Aes& operator=(const Aes&) = delete;
  Aes& operator=(Aes&&) = delete;
  ~Aes() { mbedtls_aes_free(&m_context); }

  mbedtls_aes_context* get() { return &m_context; }

 private:
  mbedtls_aes_context m_context{};
};

Bytes cbc(Aes& aes, int mode, const Bytes& in) {
  std::array<unsigned char, block_size> iv{};
  Bytes out(in.size());
  mbedtls_aes_crypt_cbc(aes.get(), mode, in.size(), iv.data(), in.data(), out.data());
  return out;
}

}  // namespace

Bytes encryptCbc(const Bytes& key, const Bytes& plain) {
  Aes aes;
  mbedtls_aes_setkey_enc(aes.get(), key.data(), key_bits);
  return cbc(aes, MBEDTLS_AES_ENCRYPT, plain);
}

Bytes decryptCbc(const Bytes& key, const Bytes& cipher) {
  Aes aes;
  mbedtls_aes_setkey_dec(aes.get(), key.data(), key_bits);
  return cbc(aes, MBEDTLS_AES_DECRYPT, cipher);
}

Bytes cmac(const Bytes& key, const Bytes& message) {
  Bytes mac(block_size);
  mbedtls_cipher_cmac(mbedtls_cipher_info_from_type(MBEDTLS_CIPHER_AES_128_ECB), key.data(), key_bits,
                      message.data(), message.size(), mac.data());
  return mac;
}

Bytes truncatedCmac(const Bytes& key, const Bytes& message) {
  const Bytes mac = cmac(key, message);
  Bytes truncated;
  for (std::size_t i = 1; i < mac.size(); i += 2) truncated.push_back(mac[i]);
  return truncated;
}

Bytes slice(const Bytes& bytes, std::size_t from, std::size_t length) {
  const std::size_t begin = std::min(from, bytes.size());
  const std::size_t end = begin + std::min(length, bytes.size() - begin);
  return {bytes.data() + begin, bytes.data() + end};
}

Bytes concat(const Bytes& first, const Bytes& second) {
  Bytes both = first;
  both.insert(both.end(), second.begin(), second.end());
  return both;
}

Bytes rotateLeft(Bytes bytes, std::size_t count) {
  std::rotate(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count), bytes.end());
  return bytes;
}

}  // namespace mvx2sim
