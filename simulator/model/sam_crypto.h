// The ciphers of the SAM's model, on mbed TLS. Keys and blocks have 16 bytes.
#ifndef MVX2SIM_MODEL_SAM_CRYPTO_H
#define MVX2SIM_MODEL_SAM_CRYPTO_H

#include "bytes.h"

namespace mvx2sim {

constexpr std::size_t block_size = 16;

// AES-128 in CBC mode (SP 800-38A) with an initial vector of zeros, over whole blocks.
Bytes encryptCbc(const Bytes& key, const Bytes& plain);
Bytes decryptCbc(const Bytes& key, const Bytes& cipher);

// AES-CMAC (RFC 4493), 16 bytes.
Bytes cmac(const Bytes& key, const Bytes& message);

// Its bytes 1, 3, 5 to 15, counted from 0.
Bytes truncatedCmac(const Bytes& key, const Bytes& message);

// Small helpers on byte strings.
Bytes slice(const Bytes& bytes, std::size_t from, std::size_t length);
Bytes concat(const Bytes& first, const Bytes& second);
Bytes rotateLeft(Bytes bytes, std::size_t count);

}  // namespace mvx2sim

#endif
