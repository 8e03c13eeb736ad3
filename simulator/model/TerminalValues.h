// The values that a terminal holds, each under the word that reads and writes it.
#ifndef MVX2SIM_MODEL_TERMINALVALUES_H
#define MVX2SIM_MODEL_TERMINALVALUES_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mvx2sim {

// Single numbers, keys and lists of numbers, with the terminal's defaults. The ranges are the model's own.
class TerminalValues {
 public:
  enum class Access {
    line,     // what a command line may do: some words are only read
    control,  // what a test may do behind the terminal's back
  };

  TerminalValues();

  // Whether the word names a number or a key.
  bool holds(const std::string& word) const { return isNumber(word) || isKey(word); }
  bool isNumber(const std::string& word) const { return m_numbers.count(word) > 0; }
  bool isKey(const std::string& word) const { return m_keys.count(word) > 0; }

  // As the terminal prints it: decimal, or "0x" and hexadecimal digits, or the 12 digits of a key.
  std::string print(const std::string& word) const;

  // Whether the text was a value in the word's range and has been taken over.
  bool write(const std::string& word, const std::string& text, Access access);

  std::int64_t number(const std::string& word) const { return m_numbers.at(word); }
  void setNumber(const std::string& word, std::int64_t number) { m_numbers.at(word) = number; }

 private:
  std::map<std::string, std::int64_t> m_numbers;
  std::map<std::string, std::string> m_keys;
};

// Up to ten numbers from 1 to 255, in the order in which they came: what fits into one answer.
class NumberList {
 public:
  explicit NumberList(std::vector<int> numbers) : m_numbers(std::move(numbers)) {}

  static bool isEntry(std::int64_t number) { return number >= 1 && number <= 255; }

  bool add(std::int64_t number);
  bool remove(std::int64_t number);
  bool replace(const std::vector<std::string>& texts);
  // The smallest number that is not on the list.
  int firstFree() const;
  int frontOr(int otherwise) const { return m_numbers.empty() ? otherwise : m_numbers.front(); }
  std::vector<std::string> print() const;

 private:
  bool has(std::int64_t number) const;

  std::vector<int> m_numbers;
};

}  // namespace mvx2sim

#endif
