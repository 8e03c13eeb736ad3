#include "device/conversions.h"

namespace mvx2 {
namespace {

std::uint32_t digitValue(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<std::uint32_t>(digit - '0');
  if (digit >= 'A' && digit <= 'F') return static_cast<std::uint32_t>(digit - 'A') + 10;
  if (digit >= 'a' && digit <= 'f') return static_cast<std::uint32_t>(digit - 'a') + 10;
  return 255;
}

bool hasHexadecimalPrefix(std::string_view text) {
  return text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

}  // namespace

std::uint32_t hexadecimal(std::string_view text) {
  if (hasHexadecimalPrefix(text)) text.remove_prefix(2);
  std::uint32_t result = 0;
  for (const char digit : text) result = result * 16 + digitValue(digit);
  return result;
}

void decimalLines(std::string text, unsigned int* values, std::size_t count) {
  std::size_t start = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t feed = text.find('\n', start);
    // strtol() takes a line feed for a leading blank: without an end of its own an empty line would read the
    // number of the next.
    if (feed != std::string::npos) text[feed] = '\0';
    values[i] = static_cast<unsigned int>(std::strtol(text.c_str() + start, nullptr, 10));
    if (feed == std::string::npos) return;
    start = feed + 1;
  }
}

bool lastLineStartsWith(std::string_view reply, char prompt) {
  const std::size_t feed = reply.rfind('\n');
  return feed != std::string_view::npos && feed + 1 < reply.size() && reply[feed + 1] == prompt;
}

}  // namespace mvx2
