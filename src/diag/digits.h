// Numbers as texts. No stream makes them: a global locale of the host must not put separators into them.
#ifndef MVX2_DIAG_DIGITS_H
#define MVX2_DIAG_DIGITS_H

#include <cstdint>
#include <string>

namespace mvx2 {

std::string decimalDigits(int value);

// Lower case, without prefix and leading zeros.
std::string hexadecimalDigits(std::uint32_t value);

}  // namespace mvx2

#endif
