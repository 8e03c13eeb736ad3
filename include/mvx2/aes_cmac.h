/**
 * @file
 * AES-128 CMAC (RFC 4493, NIST SP 800-38B) whose chain starts from a value of the caller.
 *
 * With a chaining value of 16 zero bytes the result is the published CMAC. The MAC becomes the next chaining
 * value, so that successive MACs chain on one another. Every array belongs to the caller; the working copies
 * of key and message are wiped before a function returns. Like the cipher below them (see aes.h), the
 * functions are not constant-time.
 */
#ifndef MVX2_AES_CMAC_H
#define MVX2_AES_CMAC_H

#include <mvx2/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Derives the two subkeys (RFC 4493, section 2.3).
 *
 * @param key 16 bytes
 * @param K1  receives 16 bytes: for messages that fill their last block
 * @param K2  receives 16 bytes: for all others
 */
MVX2_API void aes_GenerateSubKey(const unsigned char* key, unsigned char* K1, unsigned char* K2);

/**
 * Computes the MAC of a message (RFC 4493, section 2.4), not truncated.
 *
 * @param key     16 bytes
 * @param K1      16 bytes, of aes_GenerateSubKey() with the same key
 * @param K2      16 bytes, likewise
 * @param message the message, not modified; may be null when length is 0
 * @param length  its length in bytes, 0 to 255
 * @param mac     receives 16 bytes
 * @param iv      the chaining value, 16 bytes; receives the MAC
 */
MVX2_API void aes_buildCmac(const unsigned char* key, const unsigned char* K1, const unsigned char* K2,
                            const unsigned char* message, unsigned char length, unsigned char* mac,
                            unsigned char* iv);

/**
 * Always 1. It compares nothing: whoever verifies a MAC computes it with aes_buildCmac() and compares, in a
 * time that does not depend on the bytes.
 */
MVX2_API int aes_IsvalidCmac(void);

#ifdef __cplusplus
}
#endif

#endif
