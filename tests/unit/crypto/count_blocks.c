/* Calls one of the block functions a number of times, so that somebody outside can count the instructions. */
#include <mvx2/aes.h>
#include <stdlib.h>
#include <string.h>

int main(int argc, char** argv) {
  static const unsigned char key[16] = {1, 2, 3};
  unsigned char in[16] = {0};
  unsigned char out[16];
  unsigned char iv[16] = {0};
  uint32_t w[45] = {0};
  uint32_t dw[60];
  if (argc != 3) return 1;
  const long calls = strtol(argv[2], NULL, 10);
  aes_KeyExpansion(0, key, w, 4);
  aes_KeyInversion(0, w, 0, dw);
  if (strcmp(argv[1], "aes_Cipher") == 0) {
    for (long i = 0; i < calls; ++i) aes_Cipher(0, in, out, w, iv);
  } else if (strcmp(argv[1], "aes_InvCipher") == 0) {
    for (long i = 0; i < calls; ++i) aes_InvCipher(0, in, out, w, iv);
  } else if (strcmp(argv[1], "aes_EqInvCipher") == 0) {
    for (long i = 0; i < calls; ++i) aes_EqInvCipher(0, in, out, dw);
  } else {
    return 1;
  }
  return 0;
}
