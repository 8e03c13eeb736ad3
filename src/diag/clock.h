// The time stamps of the facades' log lines.
#ifndef MVX2_DIAG_CLOCK_H
#define MVX2_DIAG_CLOCK_H

#include <ctime>

namespace mvx2 {

// The current time as ctime() writes it, with the line feed that it ends with; null if it has no such text.
inline const char* now() {
  const std::time_t time = std::time(nullptr);
  return std::ctime(&time);
}

}  // namespace mvx2

#endif
