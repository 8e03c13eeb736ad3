// AES-128 on the host, over the exported primitives.
#ifndef MVX2_SAM_AES128_H
#define MVX2_SAM_AES128_H

#include <mvx2/aes.h>

#include "crypto/secure.h"

#include <cstdint>

namespace mvx2 {

// A key's schedule, wiped when it goes, with what its calls have left on the stack. `iv` is the chaining
// value of aes_Cipher() and aes_InvCipher().
class Aes128 {
 public:
  explicit Aes128(const unsigned char* key) { aes_KeyExpansion(0, key, m_schedule, 4); }
  Aes128(const Aes128&) = delete;
  Aes128(Aes128&&) = delete;
  Aes128& operator=(const Aes128&) = delete;
  Aes128& operator=(Aes128&&) = delete;
  ~Aes128() {
    wipe(m_schedule, sizeof m_schedule);
    wipeStackBelow();
  }

  void encipher(const unsigned char* in, unsigned char* out, unsigned char* iv) const {
    aes_Cipher(0, in, out, m_schedule, iv);
  }
  void decipher(const unsigned char* in, unsigned char* out, unsigned char* iv) const {
    aes_InvCipher(0, in, out, m_schedule, iv);
  }

 private:
  std::uint32_t m_schedule[44];
};

}  // namespace mvx2

#endif
