/* What a host application in C does with the cryptography: includes the headers, links the library, checks
 * one published answer of each. */
#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>
#include <mvx2/des.h>
#include <mvx2/des_mac.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(const char* what, const unsigned char* actual, const unsigned char* expected,
                   size_t length) {
  if (memcmp(actual, expected, length) == 0) return;
  printf("%s is wrong\n", what);
  ++failures;
}

/* FIPS 197, appendix C.1. */
static void check_aes(void) {
  static const unsigned char cipher_text[16] = {0x69, 0xc4, 0xe0, 0xd8, 0x6a, 0x7b, 0x04, 0x30,
                                                0xd8, 0xcd, 0xb7, 0x80, 0x70, 0xb4, 0xc5, 0x5a};
  unsigned char key[16];
  unsigned char block[16];
  unsigned char iv[16] = {0};
  uint32_t w[45] = {0};
  for (unsigned int i = 0; i < 16; ++i) {
    key[i] = (unsigned char)i;
    block[i] = (unsigned char)(i * 0x11);
  }
  aes_KeyExpansion(0, key, w, 4);
  if (aes_Cipher(0, block, block, w, iv) != 0) ++failures;
  expect("aes_Cipher", block, cipher_text, 16);
}

/* RFC 4493, example 1. */
static void check_aes_cmac(void) {
  static const unsigned char key[16] = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                        0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
  static const unsigned char expected[16] = {0xbb, 0x1d, 0x69, 0x29, 0xe9, 0x59, 0x37, 0x28,
                                             0x7f, 0xa3, 0x7d, 0x12, 0x9b, 0x75, 0x67, 0x46};
  unsigned char k1[16];
  unsigned char k2[16];
  unsigned char mac[16];
  unsigned char iv[16] = {0};
  aes_GenerateSubKey(key, k1, k2);
  aes_buildCmac(key, k1, k2, NULL, 0, mac, iv);
  expect("aes_buildCmac", mac, expected, 16);
}

/* FIPS 81, table B1. */
static void check_des(void) {
  static const unsigned char key[8] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef};
  static const unsigned char expected[8] = {0x3f, 0xa4, 0x0e, 0x8a, 0x98, 0x4d, 0x48, 0x15};
  des_context ctx;
  unsigned char block[8];
  memcpy(block, "Now is t", 8);
  des_setkey_enc(&ctx, key);
  des_crypt_ecb(&ctx, block, block);
  expect("des_crypt_ecb", block, expected, 8);
}

/* NIST SP 800-38B, three-key TDEA, example 1. */
static void check_tdea_cmac(void) {
  static const unsigned char key[24] = {0x8a, 0xa8, 0x3b, 0xf8, 0xcb, 0xda, 0x10, 0x62,
                                        0x0b, 0xc1, 0xbf, 0x19, 0xfb, 0xb6, 0xcd, 0x58,
                                        0xbc, 0x31, 0x3d, 0x4a, 0x37, 0x1c, 0xa8, 0xb5};
  static const unsigned char expected[8] = {0xb7, 0xa6, 0x88, 0xe1, 0x22, 0xff, 0xaf, 0x95};
  unsigned char mac[8];
  unsigned char iv[8] = {0};
  des3_computeCmac(NULL, 0, key, 24, mac, 0, iv);
  expect("des3_computeCmac", mac, expected, 8);
}

int main(void) {
  check_aes();
  check_aes_cmac();
  check_des();
  check_tdea_cmac();
  return failures;
}
