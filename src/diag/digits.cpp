#include "diag/digits.h"

#include <cinttypes>
#include <cstddef>
#include <cstdio>

namespace mvx2 {

std::string decimalDigits(int value) {
  char text[sizeof "-2147483648"];
  const int length = std::snprintf(text, sizeof text, "%d", value);
  return {text, static_cast<std::size_t>(length)};
}

std::string hexadecimalDigits(std::uint32_t value) {
  char text[sizeof "ffffffff"];
  const int length = std::snprintf(text, sizeof text, "%" PRIx32, value);
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace mvx2
