#include "TerminalValues.h"

#include "bytes.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace mvx2sim {

namespace {

constexpr std::int64_t int_min = -2147483648LL;
constexpr std::int64_t int_max = 2147483647LL;
constexpr std::size_t max_list = 10;
constexpr std::size_t key_digits = 12;

struct Number {
  const char* word;
  int hexDigits;  // 0: printed in decimal
  bool writable;
  std::int64_t min;
  std::int64_t max;
  std::int64_t initial;
};

constexpr Number numbers[] = {
    {"value", 0, true, int_min, int_max, 250},
    {"credit", 0, false, int_min, int_max, 1250},
    {"debit", 0, false, int_min, int_max, 480},
    {"wrerrs", 0, false, 0, int_max, 0},
    {"trs", 0, false, 0, int_max, 42},
    {"ccredit", 0, false, 0, 65535, 7},
    {"cdebit", 0, false, 0, 65535, 12},
    {"ctrs", 0, false, 0, int_max, 19},
    {"pmode", 0, false, 0, 255, 1},
    {"purse", 0, true, 0, int_max, 1},
    {"maxval", 0, true, 0, int_max, 100000},
    {"addval", 0, true, 0, 1, 0},
    {"serial", 0, false, 0, int_max, 30457},
    {"account", 0, true, 0, int_max, 4711},
    {"pincode", 0, true, 0, 9999, 1234},
    {"department", 0, true, 0, 65535, 12},
    {"category", 0, true, 0, 255, 3},
    {"pts", 0, true, 0, 255, 10},
    {"ptsi", 0, true, 0, 255, 1},
    {"mode", 0, true, 0, 255, 2},
    {"uoffset", 0, true, 0, 255, 4},
    {"usector", 0, true, 0, 39, 1},
    {"uoption", 4, true, 0, 0xFFFF, 0x0003},
    {"uflagid", 4, true, 0, 0xFFFF, 0x00A5},
    {"issuer", 4, true, 0, 0xFFFF, 0x1234},
    {"freq", 2, true, 0, 0xFF, 0x0D},
    {"cardid", 8, false, 0, 0xFFFFFFFF, 0x4B1D5E27},
    {"sectors", 4, true, 0, 0xFFFF, 0x0006},
    {"switch", 0, false, 0, 1, 1},  // whether a card lies on the terminal
    {"lastmvx2", 0, false, 0, int_max, 77},
};

const Number* find(const std::string& word) {
  const auto* const number = std::find_if(std::begin(numbers), std::end(numbers),
                                          [&word](const Number& entry) { return word == entry.word; });
  return number == std::end(numbers) ? nullptr : number;
}

bool isKeyText(const std::string& text) {
  const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
  return text.size() == key_digits && std::all_of(text.begin(), text.end(), isDigit);
}

}  // namespace

TerminalValues::TerminalValues()
    // Factory keys of MIFARE Classic cards, and the public key of their application directory.
    : m_keys{{"freekey1", "FFFFFFFFFFFF"},
             {"freekey2", "FFFFFFFFFFFF"},
             {"madkey", "A0A1A2A3A4A5"},
             {"ukeya", "FFFFFFFFFFFF"}} {
  for (const Number& number : numbers) m_numbers[number.word] = number.initial;
}

std::string TerminalValues::print(const std::string& word) const {
  if (const auto key = m_keys.find(word); key != m_keys.end()) return key->second;
  const int digits = find(word)->hexDigits;
  const std::int64_t value = m_numbers.at(word);
  return digits == 0 ? std::to_string(value) : "0x" + hexNumber(static_cast<std::uint64_t>(value), digits);
}

bool TerminalValues::write(const std::string& word, const std::string& text, Access access) {
  if (const auto key = m_keys.find(word); key != m_keys.end()) {
    if (!isKeyText(text)) return false;
    key->second = text;
    return true;
  }
  const Number* const number = find(word);
  const auto value = parseNumber(text);
  if (!value || *value < number->min || *value > number->max) return false;
  if (!number->writable && access == Access::line) return false;
  m_numbers[word] = *value;
  return true;
}

bool NumberList::has(std::int64_t number) const {
  return std::find(m_numbers.begin(), m_numbers.end(), number) != m_numbers.end();
}

bool NumberList::add(std::int64_t number) {
  if (!isEntry(number)) return false;
  if (has(number)) return true;
  if (m_numbers.size() == max_list) return false;
  m_numbers.push_back(static_cast<int>(number));
  return true;
}

bool NumberList::remove(std::int64_t number) {
  const auto found = std::find(m_numbers.begin(), m_numbers.end(), number);
  if (found == m_numbers.end()) return false;
  m_numbers.erase(found);
  return true;
}

bool NumberList::replace(const std::vector<std::string>& texts) {
  NumberList list({});
  for (const std::string& text : texts) {
    const auto number = parseNumber(text);
    if (!number || !list.add(*number)) return false;
  }
  m_numbers = list.m_numbers;
  return true;
}

int NumberList::firstFree() const {
  int number = 1;
  while (has(number)) ++number;
  return number;
}

std::vector<std::string> NumberList::print() const {
  std::vector<std::string> lines;
  for (const int number : m_numbers) lines.push_back(std::to_string(number));
  return lines;
}

}  // namespace mvx2sim
