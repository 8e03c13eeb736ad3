#include <mvx2/MVX2Exception.h>

#include <charconv>
#include <cstdint>

namespace {

// Digits are made without a stream: a global locale of the host must not put separators into them.
std::string hexadecimal(std::uint32_t value) {
  char text[8];
  const std::to_chars_result result = std::to_chars(std::begin(text), std::end(text), value, 16);
  return {std::begin(text), result.ptr};
}

std::string format(const char* message, long code, const char* function, const char* file, int line) {
  std::string text;
  if (message == nullptr) return text;
  text.append(message).append(" (0x").append(hexadecimal(static_cast<std::uint32_t>(code))).append(") [");
  if (function == nullptr) return text;
  text.append(function).append(":");
  if (file == nullptr) return text;
  return text.append(file).append(":").append(std::to_string(line)).append("]");
}

}  // namespace

MVX2Exception::MVX2Exception(const char* message, long code, const char* function, const char* file, int line)
    : m_text(format(message, code, function, file, line)) {}

MVX2Exception::~MVX2Exception() = default;

const char* MVX2Exception::what() const noexcept { return m_text.c_str(); }
