// Bytes and the texts that stand for them.
#ifndef MVX2SIM_MODEL_BYTES_H
#define MVX2SIM_MODEL_BYTES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mvx2sim {

using Bytes = std::vector<unsigned char>;

// The whole text as a number in this base (10 or 16, no prefix), nothing when it is anything else.
std::optional<std::int64_t> parseInteger(std::string_view text, int base);

// The whole text as a decimal number or, after "0x" or "0X", as a hexadecimal one.
std::optional<std::int64_t> parseNumber(std::string_view text);

// Upper-case hexadecimal digits with leading zeros, without a prefix.
std::string hexNumber(std::uint64_t number, int digits);

// Two digits a byte, either case, nothing between them.
std::optional<Bytes> parseHex(std::string_view text);

std::string printHex(const Bytes& bytes);

// The words of a line, split at blanks.
std::vector<std::string> splitWords(std::string_view line);

}  // namespace mvx2sim

#endif
