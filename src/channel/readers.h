// Reader names as PC/SC lists them: a multi-string, that is NUL-terminated names one after the other and an
// empty one at the end.
#ifndef MVX2_CHANNEL_READERS_H
#define MVX2_CHANNEL_READERS_H

#include <cstring>

namespace mvx2 {

// The last name in a multi-string that is accepted, a pointer into it; null if none is.
template <typename Accepts>
const char* lastName(const char* multiString, Accepts accepts) {
  const char* last = nullptr;
  for (const char* name = multiString; *name != '\0'; name += std::strlen(name) + 1) {
    if (accepts(name)) last = name;
  }
  return last;
}

// Whether a terminal's reader has this name and `readerSelect` (0: model "MVX3" absent, 1: present, -1:
// either) accepts it. Small letters count as capitals.
bool isTerminalReader(const char* name, int readerSelect);

// Whether a secure access module's reader has this name: "ACS", "ACR" or "CCID" stands in it as it is.
bool isSamReader(const char* name);

}  // namespace mvx2

#endif
