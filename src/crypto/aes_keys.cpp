// The two key schedules: forward (FIPS 197, section 5.2) and of the equivalent inverse cipher
// (section 5.3.5).
#include <mvx2/aes.h>

#include <algorithm>

#include "crypto/aes_tables.h"

using namespace mvx2;

void aes_KeyExpansion(unsigned int type, const unsigned char* key, uint32_t* w, unsigned int Nk) {
  if (type >= AES_KBR.size() || Nk < 4 || Nk > 8) return;
  const unsigned int words = 4U * (AES_KBR[type].Nr + 1U);
  if ((words - 1) / Nk > Rcon.size()) return;
  for (unsigned int i = 0; i < Nk; ++i) {
    w[i] = aes_Word(key[4 * i], key[4 * i + 1], key[4 * i + 2], key[4 * i + 3]);
  }
  for (unsigned int i = Nk; i < words; ++i) {
    uint32_t next = w[i - 1];
    if (i % Nk == 0) {
      next = aes_SubWord(aes_RotWord(next)) ^ (uint32_t{Rcon[i / Nk - 1]} << 24);
    } else if (Nk > 6 && i % Nk == 4) {
      next = aes_SubWord(next);
    }
    w[i] = w[i - Nk] ^ next;
  }
}

void aes_KeyInversion(unsigned int type, const uint32_t* w, unsigned int /*words*/, uint32_t* dw) {
  if (type >= AES_KBR.size()) return;
  const unsigned int last = 4U * AES_KBR[type].Nr;
  // The decryption schedule has room for AES-256: the word after a shorter schedule comes along.
  const unsigned int copied = std::min(last + 5, 60U);
  for (unsigned int i = 0; i < copied; ++i) {
    dw[i] = w[i];
  }
  for (unsigned int i = copied; i < 60; ++i) dw[i] = 0;
  for (unsigned int i = 4; i < last; i += 4) {
    unsigned char state[16] = {};
    aes_AddRoundKey(state, dw + i, 0);
    aes_InvMixColumns(state);
    for (unsigned int c = 0; c < 4; ++c) {
      dw[i + c] = aes_Word(state[4 * c], state[4 * c + 1], state[4 * c + 2], state[4 * c + 3]);
    }
  }
}
