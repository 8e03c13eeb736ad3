#include "values.h"

#include "text.h"

#include <algorithm>

namespace mvx2tool {

namespace {

constexpr std::int64_t int_min = -2147483648LL;
constexpr std::int64_t int_max = 2147483647LL;
constexpr std::int64_t u8 = 0xFF;
constexpr std::int64_t u16 = 0xFFFF;
constexpr std::int64_t u32 = 0xFFFFFFFF;

constexpr auto dec = Kind::decimal;
constexpr auto hex = Kind::hexadecimal;

int digitsOf(const Value& value) { return value.max == u8 ? 2 : value.max == u16 ? 4 : 8; }

// The command words whose name resembles a wrong one, as a hint.
std::string similar(const std::string& name) {
  std::vector<std::string> names;
  for (const Value& value : allValues()) {
    const std::string known = value.name;
    if (!name.empty() && known.find(name.substr(0, 3)) != std::string::npos) names.push_back(known);
  }
  return names.empty() ? "mvx2 values lists them" : "did you mean " + join(names, " or ") + "?";
}

}  // namespace

const std::vector<Value>& allValues() {
  // The purse comes before what lies in it: a restore writes in this order.
  static const std::vector<Value> values = {
      {"purse", dec, "int", 0, int_max, true, "purse in use"},
      {"value", dec, "int", int_min, int_max, true, "value on the card"},
      {"credit", dec, "int", int_min, int_max, false, "amount credited"},
      {"debit", dec, "int", int_min, int_max, false, "amount debited"},
      {"maxval", dec, "int", 0, int_max, true, "highest value a card may hold"},
      {"addval", Kind::flag, "bool", 0, 1, true, "whether values are added"},
      {"wrerrs", dec, "int", int_min, int_max, false, "write errors counted"},
      {"trs", dec, "int", int_min, int_max, false, "transactions counted by the terminal"},
      {"ccredit", dec, "uint16", 0, u16, false, "credits counted on the card"},
      {"cdebit", dec, "uint16", 0, u16, false, "debits counted on the card"},
      {"ctrs", dec, "int", int_min, int_max, false, "transactions counted on the card"},
      {"lastmvx2", dec, "int", int_min, int_max, false, "terminal that the card was last used on"},
      {"serial", dec, "int", int_min, int_max, false, "serial number"},
      {"account", dec, "int", 0, int_max, true, "account number"},
      {"pincode", dec, "uint16", 0, u16, true, "PIN code"},
      {"department", dec, "uint16", 0, u16, true, "department"},
      {"category", dec, "uint8", 0, u8, true, "category"},
      {"issuer", hex, "hex16", 0, u16, true, "issuer code"},
      {"cardid", hex, "hex32", 0, u32, false, "identifier of the card"},
      {"pts", dec, "uint8", 0, u8, true, "points"},
      {"ptsi", dec, "uint8", 0, u8, true, "points field ptsi"},
      {"mode", dec, "uint8", 0, u8, true, "mode of the terminal"},
      {"pmode", dec, "uint8", 0, u8, false, "mode field pmode"},
      {"freq", hex, "hex8", 0, u8, true, "field freq"},
      {"switch", Kind::flag, "bool", 0, 1, false, "whether a card lies on the terminal"},
      {"uoffset", dec, "uint8", 0, u8, true, "offset of the user area"},
      {"usector", dec, "uint8", 0, u8, true, "sector of the user area"},
      {"uoption", hex, "hex16", 0, u16, true, "options of the user area"},
      {"uflagid", hex, "hex16", 0, u16, true, "flag identifier of the user area"},
      {"sectors", hex, "hex16", 0, u16, true, "sector word"},
      {"listpurses", Kind::list, "list", 0, u32, false, "numbers of the purses"},
      {"listgrp", Kind::list, "list", 0, u32, false, "numbers of the groups"},
  };
  return values;
}

const Value& findValue(const std::string& name) {
  const auto& values = allValues();
  const auto found =
      std::find_if(values.begin(), values.end(), [&name](const Value& value) { return name == value.name; });
  if (found == values.end()) failUsage("no value is named " + printable(name), similar(name));
  return *found;
}

std::optional<Reading> parseReading(const Value& value, const std::string& text) {
  if (value.kind == Kind::list) {
    Reading reading;
    for (const std::string& line : lines(text)) {
      const auto number = parseDecimal(trimmed(line));
      if (!number || !fits(value, *number)) return std::nullopt;
      reading.push_back(*number);
    }
    return reading;
  }
  const std::string whole = trimmed(text);
  const auto number = value.kind == Kind::hexadecimal
                          ? parseHexadecimal(hasHexPrefix(whole) ? whole.substr(2) : whole)
                          : parseDecimal(whole);
  if (!number || !fits(value, *number)) return std::nullopt;
  return Reading{*number};
}

std::int64_t parseArgument(const Value& value, const std::string& text) {
  const auto number = hasHexPrefix(text) ? parseHexadecimal(text.substr(2)) : parseDecimal(text);
  if (!number) failUsage(printable(text) + " is no number", "give it in decimal, or in hexadecimal with 0x");
  if (!fits(value, *number))
    failUsage(text + " is outside the range of " + value.name,
              std::string(value.type) + ": " + rangeOf(value));
  return *number;
}

bool fits(const Value& value, std::int64_t number) { return number >= value.min && number <= value.max; }

std::string rangeOf(const Value& value) {
  if (value.kind == Kind::hexadecimal) return print(value, {value.min}) + ".." + print(value, {value.max});
  return std::to_string(value.min) + ".." + std::to_string(value.max);
}

std::string print(const Value& value, const Reading& reading) {
  std::vector<std::string> texts;
  for (const std::int64_t number : reading)
    texts.push_back(
        value.kind == Kind::hexadecimal
            ? "0x" + hexDigits(static_cast<std::uint64_t>(number), static_cast<std::size_t>(digitsOf(value)))
            : std::to_string(number));
  return texts.empty() ? "none" : join(texts, " ");
}

Json toJson(const Value& value, const Reading& reading) {
  if (value.kind == Kind::list) return reading;
  if (value.kind == Kind::flag) return reading.front() != 0;
  return reading.front();
}

std::string wireText(const Value& value, std::int64_t number) {
  // The sector word is the one number that is sent in hexadecimal.
  if (std::string(value.name) != "sectors") return std::to_string(number);
  return "0x" + lowerCase(hexDigits(static_cast<std::uint64_t>(number), 1));
}

const std::vector<Key>& allKeys() {
  static const std::vector<Key> keys = {{"freekey1", "first free key"},
                                        {"freekey2", "second free key"},
                                        {"madkey", "key of the card's application directory"},
                                        {"ukeya", "key A of the user area"}};
  return keys;
}

bool isKeyText(const std::string& text) {
  const auto isDigit = [](char c) { return parseHexadecimal(std::string(1, c)).has_value(); };
  return !text.empty() && text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), isDigit);
}

}  // namespace mvx2tool
