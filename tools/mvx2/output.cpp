#include "output.h"

#include "pcsc_names.h"
#include "text.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace mvx2tool {

namespace {

std::string paint(const std::string& text, Colour colour) {
  switch (colour) {
    case Colour::good:
      return "\x1B[32m" + text + "\x1B[0m";
    case Colour::warning:
      return "\x1B[33m" + text + "\x1B[0m";
    case Colour::bad:
      return "\x1B[31m" + text + "\x1B[0m";
    case Colour::plain:
      break;
  }
  return text;
}

void write(const std::string& text) {
  std::cout << text << std::flush;
  if (!std::cout) failFile("standard output cannot be written");
}

}  // namespace

Table::Table(Row head) {
  if (!head.empty()) m_rows.push_back(std::move(head));
}

std::string Table::text(bool coloured) const {
  std::vector<std::size_t> widths;
  for (const Row& row : m_rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].text.size());
  }
  std::string whole;
  for (const Row& row : m_rows) {
    std::string shown;
    std::size_t pending = 0;  // blanks that are only written when something follows them
    for (std::size_t i = 0; i < row.size(); ++i) {
      const Cell& cell = row[i];
      if (!cell.text.empty()) {
        shown.append(pending, ' ').append(coloured ? paint(cell.text, cell.colour) : cell.text);
        pending = 0;
      }
      pending += widths[i] - cell.text.size() + 2;
    }
    whole += shown + '\n';
  }
  return whole;
}

Json Output::framed(const Json& fields) const {
  Json object = {{"schema", schema_number}};
  if (!command.empty()) object["command"] = command;
  object.update(fields);
  return object;
}

void Output::show(const Json& fields, const std::string& text) const {
  write(json ? line(framed(fields)) : text);
}

void Output::show(const Json& fields, const Table& table) const {
  show(fields, table.text(isColoured(STDOUT_FILENO)));
}

void Output::notice(const Json& fields, const std::string& text) const {
  if (!quiet) std::cerr << (json ? line(framed(fields)) : text + '\n') << std::flush;
}

void Output::report(const Problem& problem) const {
  if (json) {
    Json error = {{"code", static_cast<int>(problem.exit)},
                  {"name", nameOf(problem.exit)},
                  {"message", problem.message}};
    if (!problem.operation.empty()) error["operation"] = problem.operation;
    if (!problem.reader.empty()) error["reader"] = problem.reader;
    if (problem.status)
      error["status"] = {{"name", statusName(*problem.status)},
                         {"code", "0x" + hexDigits(*problem.status, 8)}};
    if (problem.reply) error["reply"] = printable(*problem.reply);
    if (!problem.hint.empty()) error["hint"] = problem.hint;
    std::cerr << line(framed({{"error", error}})) << std::flush;
    return;
  }
  const bool coloured = isColoured(STDERR_FILENO);
  Table details;
  if (!problem.operation.empty()) details.add({"  operation", problem.operation});
  if (!problem.reader.empty()) details.add({"  reader", problem.reader});
  if (problem.status) details.add({"  status", describeStatus(*problem.status)});
  if (problem.reply) details.add({"  terminal", '"' + printable(*problem.reply) + '"'});
  if (!problem.hint.empty()) details.add({"  hint", problem.hint});
  std::cerr << "mvx2: " << (coloured ? paint(problem.message, Colour::bad) : problem.message) << '\n'
            << details.text(coloured) << std::flush;
}

std::string line(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

bool isColoured(int descriptor) {
  const char* const refused = std::getenv("NO_COLOR");
  return isatty(descriptor) == 1 && (refused == nullptr || *refused == '\0');
}

std::string describeStatus(std::uint32_t status) {
  return std::string(statusName(status)) + " (0x" + hexDigits(status, 8) + ")";
}

}  // namespace mvx2tool
