#include "bytes.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace mvx2sim {

std::optional<std::int64_t> parseInteger(std::string_view text, int base) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

std::optional<std::int64_t> parseNumber(std::string_view text) {
  const bool isHexadecimal = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
  if (!isHexadecimal) return parseInteger(text, 10);
  if (text.substr(2, 1) == "-") return std::nullopt;
  return parseInteger(text.substr(2), 16);
}

std::string hexNumber(std::uint64_t number, int digits) {
  std::string text;
  for (int i = 0; i < digits; ++i, number >>= 4U) text.push_back("0123456789ABCDEF"[number & 0xFU]);
  std::reverse(text.begin(), text.end());
  return text;
}

std::optional<Bytes> parseHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  Bytes bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const auto byte = parseInteger(text.substr(i, 2), 16);
    if (!byte || *byte < 0) return std::nullopt;
    bytes.push_back(static_cast<unsigned char>(*byte));
  }
  return bytes;
}

std::string printHex(const Bytes& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) text += hexNumber(byte, 2);
  return text;
}

std::vector<std::string> splitWords(std::string_view line) {
  std::istringstream stream{std::string(line)};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace mvx2sim
