// The unlock with fixed random numbers, from its vector file, and what a module answers in it.
#ifndef MVX2_TESTS_UNLOCK_VECTOR_H
#define MVX2_TESTS_UNLOCK_VECTOR_H

#include "support/scripted_pcsc.h"

#include <string>

namespace mvx2test {

// The bytes of a hexadecimal text, blanks allowed.
Bytes unhex(const std::string& text);
// One array after the other.
Bytes joined(Bytes first, const Bytes& second);

struct UnlockVector {
  Bytes key, rnd1, rnd2, rndA, rndB, hostCmac, hostMac, samCmac, samMac, derivationInput, kxe, rndBEnciphered,
      rndBRotated, cryptogram;

  static const UnlockVector& instance();

  Bytes step1Reply() const { return joined(rnd2, {0x90, 0xAF}); }
  Bytes step2Data() const { return joined(samMac, rndBEnciphered); }
  Bytes step2Reply() const { return joined(step2Data(), {0x90, 0xAF}); }
  // 16 bytes of the module's proof, which nobody examines.
  static Bytes step3Reply() { return joined(Bytes(16, 0x5A), {0x90, 0x00}); }
};

}  // namespace mvx2test

#endif
