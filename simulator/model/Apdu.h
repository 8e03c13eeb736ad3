// A short command APDU (ISO/IEC 7816-4) taken apart.
#ifndef MVX2SIM_MODEL_APDU_H
#define MVX2SIM_MODEL_APDU_H

#include "bytes.h"

#include <optional>

namespace mvx2sim {

struct Apdu {
  unsigned char cla;
  unsigned char ins;
  unsigned char p1;
  unsigned char p2;
  Bytes data;
  bool hasLe;
};

// Nothing when the bytes are no APDU: too short, or an Lc that is not the length of the data.
inline std::optional<Apdu> parseApdu(const Bytes& bytes) {
  constexpr std::size_t header = 4;
  if (bytes.size() < header) return std::nullopt;
  Apdu apdu{bytes[0], bytes[1], bytes[2], bytes[3], {}, bytes.size() == header + 1};
  if (bytes.size() <= header + 1) return apdu;

  const std::size_t lc = bytes[header];
  const std::size_t behindLc = bytes.size() - header - 1;
  apdu.hasLe = behindLc == lc + 1;
  if (lc == 0 || (behindLc != lc && !apdu.hasLe)) return std::nullopt;
  apdu.data.assign(bytes.data() + header + 1, bytes.data() + header + 1 + lc);
  return apdu;
}

}  // namespace mvx2sim

#endif
