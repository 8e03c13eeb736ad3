// The block functions.
#include <mvx2/aes.h>

#include <cstring>

#include "crypto/aes_inner_key.h"
#include "crypto/aes_rounds.h"
#include "crypto/aes_tables.h"

using mvx2::AES_KBR;
using mvx2::decrypted;
using mvx2::encrypted;
using mvx2::invMixedKey;
using mvx2::loadState;
using mvx2::roundKey;
using mvx2::State;
using mvx2::storeState;

int aes_Cipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* w,
               unsigned char* iv) {
  if (type >= AES_KBR.size()) return -1;
  const State cipherText = encrypted(w, AES_KBR[type].Nr, loadState(in) ^ loadState(iv));
  storeState(out, cipherText);
  storeState(iv, cipherText);
  return 0;
}

int aes_InvCipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* w,
                  unsigned char* iv) {
  if (type >= AES_KBR.size()) return -1;
  const State plainText = decrypted(w, AES_KBR[type].Nr, loadState(in), invMixedKey);
  storeState(out, plainText ^ loadState(iv));
  // After the output is written: in place, the chaining value becomes the decrypted block.
  std::memmove(iv, in, 16);
  return 0;
}

void aes_EqInvCipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* dw) {
  if (type >= AES_KBR.size()) return;
  storeState(out, decrypted(dw, AES_KBR[type].Nr, loadState(in), roundKey));
}
