#include "channel/readers.h"

#include <cstring>

namespace mvx2 {

bool isTerminalReader(const char* name, int readerSelect) {
  const auto holds = [name](const char* word) { return strcasestr(name, word) != nullptr; };

  if (!holds("KRV") && !holds("VELMORIN")) return false;
  switch (readerSelect) {
    case -1:
      return true;
    case 0:
      return !holds("MVX3");
    case 1:
      return holds("MVX3");
    default:
      return false;
  }
}

bool isSamReader(const char* name) {
  const auto holds = [name](const char* word) { return std::strstr(name, word) != nullptr; };
  return holds("ACS") || holds("ACR") || holds("CCID");
}

}  // namespace mvx2
