#include <mvx2/MVX2Exception.h>

#include <charconv>
#include <cstdint>

namespace {

// Digits are made without a stream: a global locale of the host must not put separators into them.
std::string digits(std::uint32_t value, int base) {
  char text[10];
  const auto end = std::to_chars(std::begin(text), std::end(text), value, base).ptr;
  return {text, end};
}

std::string decimal(int value) { return std::to_string(value); }

std::string format(const char* message, long code, const char* function, const char* file, int line) {
  std::string text;
  if (message == nullptr) return text;
  text.append(message).append(" (0x").append(digits(static_cast<std::uint32_t>(code), 16)).append(") [");
  if (function == nullptr) return text;
  text.append(function).append(":");
  if (file == nullptr) return text;
  return text.append(file).append(":").append(decimal(line)).append("]");
}

}  // namespace

MVX2Exception::MVX2Exception(const char* message, long code, const char* function, const char* file, int line)
    : m_text(format(message, code, function, file, line)) {}

MVX2Exception::~MVX2Exception() = default;

const char* MVX2Exception::what() const noexcept { return m_text.c_str(); }
