// The values of a terminal by name: what type they have, which numbers that type takes, what they mean.
#ifndef MVX2TOOL_VALUES_H
#define MVX2TOOL_VALUES_H

#include "output.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mvx2tool {

// How the terminal prints a value.
enum class Kind { decimal, hexadecimal, flag, list };

struct Value {
  const char* name;  // also the command word
  Kind kind;
  const char* type;
  std::int64_t min;
  std::int64_t max;
  bool writable;
  const char* meaning;
};

// A list holds any number of numbers, every other value one.
using Reading = std::vector<std::int64_t>;

const std::vector<Value>& allValues();
const Value& findValue(const std::string& name);  // fails with Exit::usage

// What the terminal's text says, if the whole of it is a value of this kind in its type's range. A text that
// is not is the terminal's way to refuse.
std::optional<Reading> parseReading(const Value& value, const std::string& text);

// A number as a user writes it, decimal or 0x and hexadecimal; fails with Exit::usage outside the type's
// range.
std::int64_t parseArgument(const Value& value, const std::string& text);

bool fits(const Value& value, std::int64_t number);
std::string rangeOf(const Value& value);
std::string print(const Value& value, const Reading& reading);
Json toJson(const Value& value, const Reading& reading);

// How a number goes to the terminal.
std::string wireText(const Value& value, std::int64_t number);

// The keys of a terminal by name, which are no numbers.
struct Key {
  const char* name;
  const char* meaning;
};

const std::vector<Key>& allKeys();

// Whether the text could be a key that a terminal shows: hexadecimal digits, two for each byte.
bool isKeyText(const std::string& text);

}  // namespace mvx2tool

#endif
