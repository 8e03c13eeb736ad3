// What a reply means. Pure functions: no I/O, no log, no state.
#ifndef MVX2_DEVICE_CONVERSIONS_H
#define MVX2_DEVICE_CONVERSIONS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace mvx2 {

// The number at the start of the text. Exactly strtol(): leading blanks and a sign are taken, the first
// non-digit ends it, no digit at all is 0, and a number beyond a long is the limit that it passes.
inline long decimal(const std::string& text) { return std::strtol(text.c_str(), nullptr, 10); }

// The whole text as one hexadecimal number, after an optional 0x or 0X, modulo 2^32. It does not stop at a
// stray character: that counts as a digit of value 255. An empty text and a prefix alone are 0.
std::uint32_t hexadecimal(std::string_view text);

// Reads one decimal number from each line, an empty line being 0, into `values`, which has room for `count`.
// Further lines are dropped; values beyond the last line are left alone.
void decimalLines(std::string text, unsigned int* values, std::size_t count);

// Whether the last line of a raw reply starts with this prompt character. A reply without a line feed has no
// such line.
bool lastLineStartsWith(std::string_view reply, char prompt);

}  // namespace mvx2

#endif
