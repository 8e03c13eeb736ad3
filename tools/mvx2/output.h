// What a command shows: for people a text, for programs one JSON object on one line.
#ifndef MVX2TOOL_OUTPUT_H
#define MVX2TOOL_OUTPUT_H

#include "errors.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace mvx2tool {

using Json = nlohmann::ordered_json;

// Grows when a program that reads the JSON of an older number would misread it.
constexpr int schema_number = 1;

enum class Colour { plain, good, warning, bad };

struct Cell {
  Cell(const char* shown) : text(shown) {}             // NOLINT(google-explicit-constructor): a row of texts
  Cell(std::string shown) : text(std::move(shown)) {}  // NOLINT(google-explicit-constructor): as above
  Cell(std::string shown, Colour painted) : text(std::move(shown)), colour(painted) {}

  std::string text;
  Colour colour = Colour::plain;
};

// Rows whose columns line up.
class Table {
 public:
  using Row = std::vector<Cell>;

  explicit Table(Row head = {});
  void add(Row row) { m_rows.push_back(std::move(row)); }
  std::string text(bool coloured) const;

 private:
  std::vector<Row> m_rows;
};

class Output {
 public:
  std::string command = {};  // the words that name the running command, for example "purse list"
  bool json = false;
  bool quiet = false;

  // The command's result on standard output.
  void show(const Json& fields, const std::string& text) const;
  void show(const Json& fields, const Table& table) const;
  // What is not the result (an attempt, a confirmation): not with --quiet, and on standard error.
  void notice(const Json& fields, const std::string& text) const;
  // The failure on standard error.
  void report(const Problem& problem) const;

 private:
  Json framed(const Json& fields) const;
};

// One line of JSON. Bytes that are no UTF-8 are replaced.
std::string line(const Json& json);

// Whether colours are wanted there: a screen, and no NO_COLOR.
bool isColoured(int descriptor);

// The failure's name and code in PC/SC and what they mean, "SCARD_E_NO_SERVICE (0x8010001D): ...".
std::string describeStatus(std::uint32_t status);

}  // namespace mvx2tool

#endif
