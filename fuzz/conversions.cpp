// The conversions of replies against the same rules written another way.
#include "device/conversions.h"
#include "fuzz.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using mvx2fuzz::check;

constexpr std::size_t list_size = 10;

// The text up to its first NUL, where a C function stops reading.
std::string_view upToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

// std::from_chars() takes neither blanks nor a plus sign and says when a number does not fit.
long expectedDecimal(std::string_view text) {
  text = upToNul(text);
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && text[0] == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text[0] == '-') return 0;
  }
  long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  return negative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
}

std::uint32_t expectedDigit(char digit) {
  constexpr std::string_view digits = "0123456789abcdef0123456789ABCDEF";
  const std::size_t found = digits.find(digit);
  return found == std::string_view::npos ? 255 : static_cast<std::uint32_t>(found % 16);
}

// From the last character to the first. The eighth from the end is the last that reaches 32 bits.
std::uint32_t expectedHexadecimal(std::string_view text) {
  const std::string_view prefix = text.substr(0, 2);
  if (prefix == "0x" || prefix == "0X") text = text.substr(2);
  std::uint32_t value = 0;
  const std::size_t reaching = std::min<std::size_t>(text.size(), 8);
  for (std::size_t i = 0; i < reaching; ++i) value += expectedDigit(text[text.size() - 1 - i]) << (4 * i);
  return value;
}

std::vector<unsigned int> expectedLines(std::string_view text) {
  std::vector<unsigned int> values;
  std::string piece;
  for (const char c : text) {
    if (c != '\n') {
      piece += c;
      continue;
    }
    values.push_back(static_cast<unsigned int>(expectedDecimal(piece)));
    piece.clear();
  }
  values.push_back(static_cast<unsigned int>(expectedDecimal(piece)));
  values.resize(list_size);
  return values;
}

char expectedLastLineStart(std::string_view reply) {
  const auto feed = std::find(reply.rbegin(), reply.rend(), '\n');
  return feed == reply.rend() || feed == reply.rbegin() ? '\0' : *std::prev(feed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  check(mvx2::decimal(text) == expectedDecimal(text), "a decimal number");
  // The input itself, without a NUL behind it.
  const std::string_view view(reinterpret_cast<const char*>(data), size);
  check(mvx2::hexadecimal(view) == expectedHexadecimal(view), "a hexadecimal number");

  std::vector<unsigned int> values(list_size, 0);
  mvx2::decimalLines(text, values.data(), values.size());
  check(values == expectedLines(text), "a list of decimal numbers");

  const char start = expectedLastLineStart(view);
  for (const char prompt : {'#', '$'})
    check(mvx2::lastLineStartsWith(view, prompt) == (start == prompt), "the prompt of the last line");
  return 0;
}
