#include "commands.h"
#include "sam.h"
#include "session.h"
#include "text.h"

namespace mvx2tool {

namespace {

// What can be said of a SAM without making its absence a failure.
void addSam(const Tool& tool, Json& fields, Table& table) {
  const std::vector<std::string> readers = sams(listReaders());
  fields["sam"] = nullptr;
  if (readers.empty()) return table.add({"SAM reader", "none"});
  Json sam = {{"reader", readers.front()}, {"serial", nullptr}};
  table.add({"SAM reader", readers.front()});
  try {
    Tool once = tool;
    once.attempts = 1;
    const std::string serial = Sam(once).serial();
    sam["serial"] = serial;
    table.add({"SAM serial", serial});
  } catch (const Failure& failure) {
    sam["problem"] = failure.what();
    table.add({"SAM serial", Cell(failure.what(), Colour::bad)});
  }
  fields["sam"] = sam;
}

// A text that the terminal shows of itself; null where this mode has none.
void addText(Session& session, const char* word, const char* field, const char* label, Json& fields,
             Table& table) {
  const std::string text = session.exchange(word).text;
  fields[field] = printable(text);
  table.add({label, printable(text)});
}

void addValue(Session& session, const char* name, const char* field, const char* label, Json& fields,
              Table& table) {
  const Value& value = findValue(name);
  const Reading reading = session.read(value);
  fields[field] = toJson(value, reading);
  const bool isFlag = value.kind == Kind::flag;
  table.add({label, isFlag ? (reading.front() != 0 ? "yes" : "no") : print(value, reading)});
}

}  // namespace

void showStatus(const Tool& tool) {
  Session session(tool);
  session.open();
  // The boot loader answers a few lines only: the mode is asked for first, the boot loader's version next.
  const char prompt = session.exchange("").prompt;
  const std::string reader = session.reader();
  Json fields = {{"reader", reader}, {"mode", modeOf(prompt)}};
  Table table;
  table.add({"Reader", reader});
  table.add({"Mode", modeOf(prompt)});
  addText(session, "vboot", "boot_version", "Boot loader", fields, table);
  if (prompt == boot_prompt) {
    fields.update({{"version", nullptr}, {"serial", nullptr}, {"card", nullptr}});
  } else {
    addText(session, "version", "version", "Firmware", fields, table);
    addValue(session, "serial", "serial", "Serial number", fields, table);
    addValue(session, "switch", "card", "Card on it", fields, table);
  }
  addSam(tool, fields, table);
  tool.output.show(fields, table);
}

}  // namespace mvx2tool
