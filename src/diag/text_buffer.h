// The static buffers that texts are handed out in.
#ifndef MVX2_DIAG_TEXT_BUFFER_H
#define MVX2_DIAG_TEXT_BUFFER_H

#include <iterator>
#include <string_view>

namespace mvx2 {

// Puts a text and a NUL into a buffer and returns it. What does not fit is left out: no reply of a reader is
// as long.
inline const char* assign(char (&buffer)[128], std::string_view text) {
  buffer[text.copy(std::begin(buffer), std::size(buffer) - 1)] = '\0';
  return std::begin(buffer);
}

}  // namespace mvx2

#endif
