/**
 * @file
 * AES (FIPS 197), one 16-byte block at a time, with the CBC chaining folded into the block functions.
 *
 * Common to all functions:
 *  - `type` selects the key size: 0 is AES-128 (Nk 4, Nr 10), 1 is AES-192 (Nk 6, Nr 12), 2 is AES-256 (Nk 8,
 *    Nr 14). Nk is the key's length in 32-bit words, Nr the number of rounds. With any other type nothing is
 *    read or written.
 *  - A block, a state and a chaining value are 16 bytes. The state is held column by column: byte 4c + r is
 *    row r of column c.
 *  - A schedule is an array of words. The first of four bytes is the most significant one of its word. The
 *    round key of round n is words 4n to 4n + 3.
 *  - Every array belongs to the caller; nothing is kept between calls and nothing is allocated. The caller
 *    wipes the schedules that it no longer needs.
 *
 * Not constant-time: the functions look key- and data-dependent positions up in tables. How long a call takes
 * and which cache lines it leaves behind depends on the key. On a board that runs code of different trust on
 * one processor, that other code can observe this and, with enough observed calls, recover the key. Use these
 * functions where every process on the board may know the key, or where the number of blocks per key is small
 * and the callers are trusted; otherwise use an implementation that makes no table look-ups.
 */
#ifndef MVX2_AES_H
#define MVX2_AES_H

#include <mvx2/export.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Expands a key into the forward schedule (FIPS 197, section 5.2).
 *
 * @param type the key size
 * @param key  4 * Nk bytes
 * @param w    receives 4 * (Nr + 1) words: 44, 52 or 60
 * @param Nk   the key's length in words, as a rule the type's. The type alone says how many words are made:
 * with another key length it is that many of the longer key's schedule, or with more round constants than the
 * standard has (then zero). With 0 nothing is written.
 */
MVX2_API void aes_KeyExpansion(unsigned int type, const unsigned char* key, uint32_t* w, unsigned int Nk);

/**
 * Makes the schedule of aes_EqInvCipher() out of the forward schedule: InvMixColumns on the round keys 1 to
 * Nr - 1 (FIPS 197, section 5.3.5).
 *
 * @param type  the key size
 * @param w     the forward schedule and one word more, 45, 53 or 61 words. For types 0 and 1 the extra word
 * is copied; for type 2 it plays no part.
 * @param words not read
 * @param dw    receives 60 words whatever the type: the schedule, the extra word, zeros. May be `w`.
 */
MVX2_API void aes_KeyInversion(unsigned int type, const uint32_t* w, unsigned int words, uint32_t* dw);

/**
 * Encrypts one block in CBC fashion (FIPS 197, section 5.1): out = AES(in XOR iv), iv = out. With an iv of 16
 * zero bytes it is the plain block encryption.
 *
 * @param type the key size
 * @param in   16 bytes
 * @param out  receives 16 bytes; may be `in`
 * @param w    the forward schedule
 * @param iv   the chaining value, 16 bytes; receives the ciphertext
 * @return 0; -1 for an unknown type
 */
MVX2_API int aes_Cipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* w,
                        unsigned char* iv);

/**
 * Decrypts one block in CBC fashion with the forward schedule (FIPS 197, section 5.3):
 * out = AES^-1(in) XOR iv, then iv = in.
 *
 * `in` is read into `iv` after `out` is written. With `out` equal to `in` the chaining value therefore
 * becomes the decrypted block, and a chain of such calls goes wrong from its second block on: pass distinct
 * arrays.
 *
 * @param type the key size
 * @param in   16 bytes
 * @param out  receives 16 bytes
 * @param w    the forward schedule
 * @param iv   the chaining value, 16 bytes; receives the block in `in`
 * @return 0; -1 for an unknown type
 */
MVX2_API int aes_InvCipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* w,
                           unsigned char* iv);

/**
 * Decrypts one block with the equivalent inverse cipher (FIPS 197, section 5.3.5). No chaining.
 *
 * @param type the key size
 * @param in   16 bytes
 * @param out  receives 16 bytes; may be `in`
 * @param dw   the schedule that aes_KeyInversion() made
 */
MVX2_API void aes_EqInvCipher(unsigned int type, const unsigned char* in, unsigned char* out,
                              const uint32_t* dw);

/** XORs the words 4 * round to 4 * round + 3 of the schedule into the 16-byte state. */
MVX2_API void aes_AddRoundKey(unsigned char* state, const uint32_t* w, unsigned int round);

/** Replaces each of the 16 bytes through the S-box. */
MVX2_API void aes_SubBytes(unsigned char* state);

/** Replaces each of the 16 bytes through the inverse S-box. */
MVX2_API void aes_InvSubBytes(unsigned char* state);

/** Rotates row r of the 16-byte state left by r places. */
MVX2_API void aes_ShiftRows(unsigned char* state);

/** Rotates row r of the 16-byte state right by r places. */
MVX2_API void aes_InvShiftRows(unsigned char* state);

/** Multiplies each column of the 16-byte state by the matrix of FIPS 197, section 5.1.3. */
MVX2_API void aes_MixColumns(unsigned char* state);

/** Multiplies each column of the 16-byte state by the inverse matrix of FIPS 197, section 5.3.3. */
MVX2_API void aes_InvMixColumns(unsigned char* state);

/** The word with each of its four bytes replaced through the S-box. */
MVX2_API uint32_t aes_SubWord(uint32_t word);

/** The word (a0, a1, a2, a3) as (a1, a2, a3, a0), most significant byte first. */
MVX2_API uint32_t aes_RotWord(uint32_t word);

/** The word of four bytes, b0 the most significant. */
MVX2_API uint32_t aes_Word(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3);

/**
 * a * b modulo 256, XORed with 0x1b when a * b is 256 or more. With b = 2 this is the multiplication by x in
 * the field of AES (xtime); with a larger b it is no field multiplication.
 */
MVX2_API unsigned char aes_Operator(unsigned char a, unsigned char b);

#ifdef __cplusplus
}
#endif

#endif
