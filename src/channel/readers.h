// Reader names as PC/SC lists them: a multi-string, that is NUL-terminated names one after the other and an
// empty one at the end.
#ifndef MVX2_CHANNEL_READERS_H
#define MVX2_CHANNEL_READERS_H

#include <vector>

namespace mvx2 {

// The names in a multi-string, in its order; they point into it.
std::vector<const char*> readerNames(const char* multiString);

// Whether a terminal's reader has this name and `readerSelect` (0: model "MVX3" absent, 1: present, -1:
// either) accepts it.
bool isTerminalReader(const char* name, int readerSelect);

// Whether a secure access module's reader has this name: "ACS", "ACR" or "CCID" stands in it as it is.
bool isSamReader(const char* name);

}  // namespace mvx2

#endif
