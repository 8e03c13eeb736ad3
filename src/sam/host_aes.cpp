// The AES operations that run on the host.
#include <mvx2/SAMChannel.h>
#include <mvx2/aes_cmac.h>

#include "crypto/secure.h"
#include "sam/aes128.h"

#include <algorithm>

namespace {

// The 8 bytes at the odd positions.
void truncate(const unsigned char* cmac, unsigned char* mac) {
  for (int i = 0; i < 8; ++i) mac[i] = cmac[2 * i + 1];
}

}  // namespace

bool SAMChannel::AES_Cipher(unsigned char* key, unsigned char* in, unsigned long /*inLength*/,
                            unsigned char* out, unsigned long& outLength, unsigned char* iv) {
  mvx2::Aes128(key).encipher(in, out, iv);
  outLength = 16;
  return true;
}

bool SAMChannel::AES_Decipher(unsigned char* key, unsigned char* in, unsigned char* out,
                              unsigned long& /*outLength*/, unsigned char* iv, unsigned long outSize,
                              unsigned long inLength) {
  if (inLength <= 16) {
    mvx2::Aes128(key).decipher(in, out, iv);
  } else if (inLength == 32) {
    const mvx2::Aes128 aes(key);
    unsigned char plain[32];
    const mvx2::Wiper wipePlain(plain);
    aes.decipher(in, plain, iv);
    aes.decipher(in + 16, plain + 16, iv);
    if (outSize == 32) std::copy_n(plain, 32, out);
  }
  return true;
}

void SAMChannel::calculateCMAC(unsigned char* message16, unsigned char* key, unsigned char* k1,
                               unsigned char* k2, unsigned char* cmacOut, unsigned char* macOut) {
  const mvx2::StackWiper wipeStack;
  unsigned char chain[16] = {};
  const mvx2::Wiper wipeChain(chain);
  aes_buildCmac(key, k1, k2, message16, 16, cmacOut, chain);
  truncate(cmacOut, macOut);
}

void SAMChannel::calculateAESCMAC(unsigned char* data, unsigned long dataLength, unsigned char* key,
                                  unsigned char* cmacOut, unsigned char* macOut, unsigned char* chainOut,
                                  unsigned char* chainIn) {
  const mvx2::StackWiper wipeStack;
  unsigned char k1[16];
  unsigned char k2[16];
  unsigned char chain[16] = {};
  const mvx2::Wiper wipeK1(k1);
  const mvx2::Wiper wipeK2(k2);
  const mvx2::Wiper wipeChain(chain);
  if (chainIn != nullptr) std::copy_n(chainIn, sizeof chain, chain);
  aes_GenerateSubKey(key, k1, k2);
  aes_buildCmac(key, k1, k2, data, static_cast<unsigned char>(dataLength), cmacOut, chain);
  truncate(cmacOut, macOut);
  std::copy_n(chain, sizeof chain, chainOut);
}
