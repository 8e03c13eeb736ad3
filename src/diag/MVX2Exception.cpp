#include <mvx2/MVX2Exception.h>

#include "diag/digits.h"

namespace {

std::string format(const char* message, long code, const char* function, const char* file, int line) {
  std::string text;
  if (message == nullptr) return text;
  text.append(message)
      .append(" (0x")
      .append(mvx2::hexadecimalDigits(static_cast<std::uint32_t>(code)))
      .append(") [");
  if (function == nullptr) return text;
  text.append(function).append(":");
  if (file == nullptr) return text;
  return text.append(file).append(":").append(mvx2::decimalDigits(line)).append("]");
}

}  // namespace

MVX2Exception::MVX2Exception(const char* message, long code, const char* function, const char* file, int line)
    : m_text(format(message, code, function, file, line)) {}

MVX2Exception::~MVX2Exception() = default;

const char* MVX2Exception::what() const noexcept { return m_text.c_str(); }
