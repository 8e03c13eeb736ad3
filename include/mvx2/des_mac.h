/**
 * @file
 * Message authentication codes on DES and TDEA, with a chaining value of the caller.
 *
 * The arrays belong to the caller; key schedules, subkeys and working blocks are wiped before a function
 * returns. Like the ciphers below them (see des.h), the functions are not constant-time.
 */
#ifndef MVX2_DES_MAC_H
#define MVX2_DES_MAC_H

#include <mvx2/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * CBC-MAC of 32 bits, without padding (ISO/IEC 9797-1, MAC algorithm 1). With a 16-byte key every block is
 * encrypted with two-key TDEA; there is no single-DES chain with a final triple step.
 *
 * @param input       the message, padded by the caller
 * @param inputLength its length in bytes, a multiple of 8. With any other length the MAC is four zero bytes
 * and the chaining value keeps its bytes; so it is for an empty message.
 * @param key         the key
 * @param keyLength   16 for two-key TDEA; with any other length the first 8 bytes are a DES key
 * @param mac         receives the first 4 bytes of the last ciphertext block
 * @param reserved    not read
 * @param iv          the chaining value, 8 bytes; receives the last ciphertext block
 */
MVX2_API void des_ComputeMac(const unsigned char* input, unsigned int inputLength, const unsigned char* key,
                             unsigned int keyLength, unsigned char mac[4], unsigned int reserved,
                             unsigned char iv[8]);

/**
 * Derives the two subkeys of CMAC for a block of 64 bits (NIST SP 800-38B, section 6.1).
 *
 * @param key       the key
 * @param keyLength 24 for three-key TDEA, 16 for two-key TDEA; with any other length the first 8 bytes are a
 * DES key
 * @param K1        receives 8 bytes: for messages that fill their last block
 * @param K2        receives 8 bytes: for all others
 */
MVX2_API void des3_cmac_subkey_generation(const unsigned char* key, unsigned int keyLength,
                                          unsigned char K1[8], unsigned char K2[8]);

/**
 * TDEA-CMAC (NIST SP 800-38B, section 6.2), not truncated, whose chain starts from a value of the caller.
 * With a chaining value of 8 zero bytes the result is the published CMAC.
 *
 * @param message       the message, not modified; may be null when its length is 0
 * @param messageLength its length in bytes
 * @param key           the key
 * @param keyLength     24 for three-key TDEA, 16 for two-key TDEA. With any other length the MAC and the
 * chaining value become eight zero bytes, whatever the message: there is no single-DES form.
 * @param mac           receives 8 bytes
 * @param reserved      not read
 * @param iv            the chaining value, 8 bytes; receives the MAC
 */
MVX2_API void des3_computeCmac(const unsigned char* message, unsigned int messageLength,
                               const unsigned char* key, unsigned int keyLength, unsigned char mac[8],
                               unsigned int reserved, unsigned char iv[8]);

#ifdef __cplusplus
}
#endif

#endif
