#include "commands.h"
#include "session.h"
#include "text.h"

namespace mvx2tool {

namespace {

std::vector<Value> chosen(const Arguments& arguments) {
  if (arguments.all && !arguments.names.empty()) failUsage("give names or --all, not both");
  if (arguments.all) return allValues();
  if (arguments.names.empty()) failUsage("which value? Give its name, or --all", "mvx2 values lists them");
  std::vector<Value> values;
  for (const std::string& name : arguments.names) values.push_back(findValue(name));
  return values;
}

// What get shows, and what the terminal refused on the way.
struct Shown {
  Json values = Json::array();
  Table table;
  std::string bare = {};
  std::vector<std::string> refused = {};
  std::string reply = {};
  std::string hint = {};
};

void add(Shown& shown, const Value& value, const Reading& reading) {
  const std::string text = print(value, reading);
  Json entry = {{"name", value.name}, {"value", toJson(value, reading)}, {"text", text}};
  shown.values.push_back(entry);
  shown.table.add({value.name, text});
  shown.bare += text + '\n';
}

void addRefused(Shown& shown, const Value& value, const Problem& problem) {
  const std::string reply = printable(problem.reply.value_or(""));
  shown.values.push_back({{"name", value.name}, {"value", nullptr}, {"refused", reply}});
  shown.table.add({value.name, Cell("refused: \"" + reply + '"', Colour::bad)});
  shown.bare += '\n';
  shown.refused.emplace_back(value.name);
  shown.reply = problem.reply.value_or("");
  shown.hint = problem.hint;
}

}  // namespace

void showValues(const Tool& tool) {
  Table table({"NAME", "TYPE", "RANGE", "ACCESS", "MEANING"});
  Json values = Json::array();
  for (const Value& value : allValues()) {
    const char* const access = value.writable ? "read-write" : "read";
    table.add({value.name, value.type, rangeOf(value), access, value.meaning});
    values.push_back({{"name", value.name},
                      {"type", value.type},
                      {"min", value.min},
                      {"max", value.max},
                      {"access", access},
                      {"meaning", value.meaning}});
  }
  tool.output.show({{"values", values}}, table);
}

void getValues(const Tool& tool, const Arguments& arguments) {
  const std::vector<Value> values = chosen(arguments);
  Session session(tool);
  session.open();
  Shown shown;
  for (const Value& value : values) {
    try {
      add(shown, value, session.read(value));
    } catch (const Failure& failure) {
      if (failure.problem().exit != Exit::refused) throw;
      addRefused(shown, value, failure.problem());
    }
  }
  const Json fields = {{"values", shown.values}};
  if (tool.output.quiet) {
    tool.output.show(fields, shown.bare);
  } else {
    tool.output.show(fields, shown.table);
  }
  if (!shown.refused.empty()) failRefused(join(shown.refused, " "), shown.reply, {}, shown.hint);
}

void setValue(const Tool& tool, const Arguments& arguments) {
  const Value& value = findValue(arguments.name);
  if (!value.writable) failUsage(std::string(value.name) + " can only be read");
  const std::int64_t number = parseArgument(value, arguments.value);
  Session session(tool);
  session.open();
  const std::string answer = printable(session.write(value, number));
  const std::string text = print(value, {number});
  tool.output.show(
      {{"name", value.name}, {"value", toJson(value, {number})}, {"text", text}, {"answer", answer}},
      tool.output.quiet
          ? ""
          : std::string(value.name) + " is now " + text + " (the terminal answered \"" + answer + "\")\n");
}

}  // namespace mvx2tool
