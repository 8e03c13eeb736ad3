// The block functions.
#include <mvx2/aes.h>

#include <cstring>

#include "crypto/aes_tables.h"

using namespace mvx2;

int aes_Cipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* w,
               unsigned char* iv) {
  if (type >= AES_KBR.size()) return -1;
  const unsigned int Nr = AES_KBR[type].Nr;
  unsigned char state[16];
  for (unsigned int i = 0; i < 16; ++i) state[i] = static_cast<unsigned char>(in[i] ^ iv[i]);
  aes_AddRoundKey(state, w, 0);
  for (unsigned int round = 1; round < Nr; ++round) {
    aes_SubBytes(state);
    aes_ShiftRows(state);
    aes_MixColumns(state);
    aes_AddRoundKey(state, w, round);
  }
  aes_SubBytes(state);
  aes_ShiftRows(state);
  aes_AddRoundKey(state, w, Nr);
  std::memcpy(out, state, 16);
  std::memcpy(iv, state, 16);
  return 0;
}

int aes_InvCipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* w,
                  unsigned char* iv) {
  if (type >= AES_KBR.size()) return -1;
  const unsigned int Nr = AES_KBR[type].Nr;
  unsigned char state[16];
  std::memcpy(state, in, 16);
  aes_AddRoundKey(state, w, Nr);
  for (unsigned int round = Nr - 1; round > 0; --round) {
    aes_InvShiftRows(state);
    aes_InvSubBytes(state);
    aes_AddRoundKey(state, w, round);
    aes_InvMixColumns(state);
  }
  aes_InvShiftRows(state);
  aes_InvSubBytes(state);
  aes_AddRoundKey(state, w, 0);
  for (unsigned int i = 0; i < 16; ++i) out[i] = static_cast<unsigned char>(state[i] ^ iv[i]);
  std::memmove(iv, in, 16);
  return 0;
}

void aes_EqInvCipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* dw) {
  if (type >= AES_KBR.size()) return;
  const unsigned int Nr = AES_KBR[type].Nr;
  unsigned char state[16];
  std::memcpy(state, in, 16);
  aes_AddRoundKey(state, dw, Nr);
  for (unsigned int round = Nr - 1; round > 0; --round) {
    aes_InvSubBytes(state);
    aes_InvShiftRows(state);
    aes_InvMixColumns(state);
    aes_AddRoundKey(state, dw, round);
  }
  aes_InvSubBytes(state);
  aes_InvShiftRows(state);
  aes_AddRoundKey(state, dw, 0);
  std::memcpy(out, state, 16);
}
