#include "text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace mvx2tool {

namespace {

std::optional<std::int64_t> parse(const std::string& text, int base) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, base);
  return result.ec == std::errc() && result.ptr == end ? std::make_optional(number) : std::nullopt;
}

// The byte that an escape stands for; `at` is behind its backslash and is moved behind the escape.
std::optional<char> escapedByte(const std::string& text, std::size_t& at) {
  const char letter = at < text.size() ? text[at++] : '\0';
  if (letter == 'r') return '\r';
  if (letter == 'n') return '\n';
  if (letter == 't') return '\t';
  if (letter == '\\') return '\\';
  if (letter != 'x' || at + 2 > text.size() || text[at] == '-') return std::nullopt;
  const auto byte = parse(text.substr(at, 2), 16);
  at += 2;
  return byte ? std::make_optional(static_cast<char>(*byte)) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> parseDecimal(const std::string& text) { return parse(text, 10); }

std::optional<std::int64_t> parseHexadecimal(const std::string& text) {
  return text.empty() || text.front() == '-' ? std::nullopt : parse(text, 16);
}

bool hasHexPrefix(const std::string& text) {
  return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

std::string trimmed(const std::string& text) {
  const char* const blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string join(const std::vector<std::string>& texts, const std::string& between) {
  std::string whole;
  for (const std::string& text : texts) whole += (whole.empty() ? "" : between) + text;
  return whole;
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> found;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    found.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return found;
}

std::string hexDigits(std::uint64_t number, std::size_t digits) {
  std::string text;
  for (; number != 0 || text.size() < digits; number >>= 4U) text += "0123456789ABCDEF"[number & 0xFU];
  std::reverse(text.begin(), text.end());
  return text;
}

std::string hexBytes(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) text += hexDigits(static_cast<unsigned char>(byte), 2);
  return text;
}

std::optional<std::string> parseHexBytes(const std::string& text) {
  std::string digits = text;
  const auto isBetween = [](char c) { return c == ' ' || c == ':'; };
  digits.erase(std::remove_if(digits.begin(), digits.end(), isBetween), digits.end());
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    const auto byte = parseHexadecimal(digits.substr(at, 2));
    if (!byte) return std::nullopt;
    bytes += static_cast<char>(*byte);
  }
  return bytes;
}

std::string printable(const std::string& text) {
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\r') {
      shown += "\\r";
    } else if (c == '\n') {
      shown += "\\n";
    } else if (c == '\\') {
      shown += "\\\\";
    } else if (byte < ' ' || byte > '~') {
      shown += "\\x" + hexDigits(byte, 2);
    } else {
      shown += c;
    }
  }
  return shown;
}

std::optional<std::string> unescaped(const std::string& text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] != '\\') {
      bytes += text[at++];
      continue;
    }
    const auto byte = escapedByte(text, ++at);
    if (!byte) return std::nullopt;
    bytes += *byte;
  }
  return bytes;
}

}  // namespace mvx2tool
