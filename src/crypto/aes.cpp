// The block functions.
#include <mvx2/aes.h>

#include <array>
#include <cstring>

#include "crypto/aes_inner_key.h"
#include "crypto/aes_rounds.h"
#include "crypto/aes_tables.h"

// Built for 32-bit ARM with and without NEON, the library asks the processor which it is.
#if defined(MVX2_NEON) && !defined(__ARM_NEON)
#define MVX2_ASKS_FOR_NEON
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

using mvx2::AES_KBR;
using mvx2::decrypted;
using mvx2::encrypted;
using mvx2::invMixedKey;
using mvx2::loadState;
using mvx2::roundKey;
using mvx2::State;
using mvx2::storeState;

namespace {

template <class InnerKey>
int invCipher(unsigned int Nr, const unsigned char* in, unsigned char* out, const uint32_t* w,
              unsigned char* iv, InnerKey innerKey) {
  const State plainText = decrypted(w, Nr, loadState(in), innerKey);
  storeState(out, plainText ^ loadState(iv));
  // After the output is written: in place, the chaining value becomes the decrypted block. A memmove() would
  // be a call on ARM.
  std::array<unsigned char, 16> block = {};
  std::memcpy(block.data(), in, 16);
  std::memcpy(iv, block.data(), 16);
  return 0;
}

#ifdef MVX2_ASKS_FOR_NEON
const bool hasNeon = (getauxval(AT_HWCAP) & HWCAP_NEON) != 0;

MVX2_NEON int invCipherNeon(unsigned int Nr, const unsigned char* in, unsigned char* out, const uint32_t* w,
                            unsigned char* iv) {
  return invCipher(Nr, in, out, w, iv, mvx2::neon::invMixedKey);
}
#endif

}  // namespace

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
  const unsigned int Nr = AES_KBR[type].Nr;
#ifdef MVX2_ASKS_FOR_NEON
  if (hasNeon) return invCipherNeon(Nr, in, out, w, iv);
#endif
  return invCipher(Nr, in, out, w, iv, invMixedKey);
}

void aes_EqInvCipher(unsigned int type, const unsigned char* in, unsigned char* out, const uint32_t* dw) {
  if (type >= AES_KBR.size()) return;
  storeState(out, decrypted(dw, AES_KBR[type].Nr, loadState(in), roundKey));
}
