/**
 * @file
 * DES and triple DES (FIPS 46-3, NIST SP 800-67), with the interface of the PolarSSL 1.x DES module.
 *
 * Common to all functions:
 *  - A key of DES is 8 bytes, of two-key TDEA 16 (K1 K2, used as K1 K2 K1), of three-key TDEA 24 (K1 K2 K3).
 *    Parity bits are ignored. A block and a chaining value are 8 bytes.
 *  - A context belongs to the caller; a set-key function fills it, and the caller wipes it when the key is no
 *    longer needed. The result is 0 unless stated.
 *
 * Not constant-time: the functions look key- and data-dependent positions up in tables. On a board that runs
 * code of different trust on one processor, that other code can learn the key from the traces that the
 * look-ups leave in the cache. DES itself gives no protection today: use these functions for what already
 * depends on them.
 */
#ifndef MVX2_DES_H
#define MVX2_DES_H

#include <mvx2/export.h>
#include <stddef.h>
#include <stdint.h>

/** The mode argument of the CBC functions that encrypts. */
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): C has no other constant that its preprocessor sees.
#define DES_ENCRYPT 1
/** The mode argument of the CBC functions that decrypts; so does every other value than DES_ENCRYPT. */
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define DES_DECRYPT 0

#ifdef __cplusplus
extern "C" {
#endif

/** The key schedule of DES, for one direction. */
// NOLINTNEXTLINE(modernize-use-using): C has no other alias.
typedef struct {
  uint32_t mode;   /**< neither set nor read */
  uint32_t sk[32]; /**< the round keys */
} des_context;

/** The key schedule of TDEA, for one direction. */
// NOLINTNEXTLINE(modernize-use-using)
typedef struct {
  uint32_t mode;   /**< neither set nor read */
  uint32_t sk[96]; /**< the round keys of the three steps */
} des3_context;

/** Gives every byte odd parity in its lowest bit. */
MVX2_API void des_key_set_parity(unsigned char key[8]);

/** 1 if any byte lacks odd parity, else 0. */
MVX2_API int des_key_check_key_parity(const unsigned char key[8]);

/** 1 if the key is one of the 16 weak and semi-weak keys (FIPS 74), parity bits set, else 0. */
MVX2_API int des_key_check_weak(const unsigned char key[8]);

/** Sets the key for encryption. */
MVX2_API int des_setkey_enc(des_context* ctx, const unsigned char key[8]);

/** Sets the key for decryption. */
MVX2_API int des_setkey_dec(des_context* ctx, const unsigned char key[8]);

/** Sets a two-key TDEA key for encryption. */
MVX2_API int des3_set2key_enc(des3_context* ctx, const unsigned char key[16]);

/** Sets a two-key TDEA key for decryption. */
MVX2_API int des3_set2key_dec(des3_context* ctx, const unsigned char key[16]);

/** Sets a three-key TDEA key for encryption. */
MVX2_API int des3_set3key_enc(des3_context* ctx, const unsigned char key[24]);

/** Sets a three-key TDEA key for decryption. */
MVX2_API int des3_set3key_dec(des3_context* ctx, const unsigned char key[24]);

/** Processes one block in the direction for which the key was set. `output` may be `input`. */
MVX2_API int des_crypt_ecb(des_context* ctx, const unsigned char input[8], unsigned char output[8]);

/** The same with TDEA. */
MVX2_API int des3_crypt_ecb(des3_context* ctx, const unsigned char input[8], unsigned char output[8]);

/**
 * Processes whole blocks in CBC mode.
 *
 * @param ctx    a key set for the direction that `mode` names
 * @param mode   DES_ENCRYPT, or any other value to decrypt
 * @param length the number of bytes, a multiple of 8; 0 is allowed
 * @param iv     the chaining value, 8 bytes; receives the last ciphertext block (encryption) or the last
 * input block (decryption)
 * @param input  `length` bytes
 * @param output receives `length` bytes; may be `input`
 * @return 0; 1 if the length is not a multiple of 8, and nothing is processed
 */
MVX2_API int des_crypt_cbc(des_context* ctx, int mode, size_t length, unsigned char iv[8],
                           const unsigned char* input, unsigned char* output);

/** The same with TDEA. */
MVX2_API int des3_crypt_cbc(des3_context* ctx, int mode, size_t length, unsigned char iv[8],
                            const unsigned char* input, unsigned char* output);

#ifdef __cplusplus
}
#endif

#endif
