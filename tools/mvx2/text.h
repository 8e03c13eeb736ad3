// Texts: numbers from and to them, and what may be shown of what a terminal sends.
#ifndef MVX2TOOL_TEXT_H
#define MVX2TOOL_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mvx2tool {

// The whole text as a number, or nothing: decimal with an optional minus sign, or hexadecimal without prefix.
std::optional<std::int64_t> parseDecimal(const std::string& text);
std::optional<std::int64_t> parseHexadecimal(const std::string& text);

bool hasHexPrefix(const std::string& text);
std::string trimmed(const std::string& text);
std::string lowerCase(std::string text);
std::string join(const std::vector<std::string>& texts, const std::string& between);
std::vector<std::string> lines(const std::string& text);

// At least so many upper-case digits, without prefix.
std::string hexDigits(std::uint64_t number, std::size_t digits);
std::string hexBytes(const std::string& bytes);
// The bytes of a text of hexadecimal digits, blanks and colons between them allowed.
std::optional<std::string> parseHexBytes(const std::string& text);

// A text fit for a screen: control characters and bytes above 7E appear as escapes, so that nothing a
// terminal sends can steer the user's screen.
std::string printable(const std::string& text);

// The reverse: \r \n \t \\ and \xNN become bytes. Nothing for any other use of a backslash.
std::optional<std::string> unescaped(const std::string& text);

}  // namespace mvx2tool

#endif
