#include "commands.h"
#include "session.h"
#include "text.h"

#include <algorithm>

namespace mvx2tool {

namespace {

// What a command answers when it has done something: one decimal number.
std::string exchangeForNumber(Session& session, const std::string& line, const std::string& operation) {
  std::string answer = trimmed(session.exchange(line).text);
  if (!parseDecimal(answer)) failRefused(operation, answer);
  return answer;
}

void confirm(const Tool& tool, const std::string& answer, Json fields, const std::string& text) {
  fields["answer"] = answer;
  tool.output.show(fields, tool.output.quiet ? "" : text + " (the terminal answered \"" + answer + "\")\n");
}

bool isListed(Session& session, const char* list, std::int64_t number) {
  const Reading listed = session.read(findValue(list));
  return std::find(listed.begin(), listed.end(), number) != listed.end();
}

}  // namespace

void actOnCard(const Tool& tool, const std::string& word) {
  Session session(tool);
  session.open();
  const std::string answer = exchangeForNumber(session, word, word);
  confirm(tool, answer, {{"action", word}}, word + " is done");
}

void listNumbers(const Tool& tool, const std::string& word) {
  Session session(tool);
  session.open();
  const Value& value = findValue(word);
  const Reading reading = session.read(value);
  std::string text;
  for (const std::int64_t number : reading) text += std::to_string(number) + '\n';
  if (reading.empty() && !tool.output.quiet) text = "none\n";
  tool.output.show({{"numbers", toJson(value, reading)}}, text);
}

void takePurse(const Tool& tool, const std::string& word, std::uint32_t purse) {
  Session session(tool);
  session.open();
  const std::string number = std::to_string(purse);
  const std::string answer = exchangeForNumber(session, word + ' ' + number, word);
  const Value& value = findValue("purse");
  const Reading kept = session.read(value);
  if (kept != Reading{purse})
    failRefused(word, answer,
                "the terminal did not take purse " + number + ": it holds " + print(value, kept));
  confirm(tool, answer, {{"purse", purse}}, "purse is now " + number);
}

void deleteNumber(const Tool& tool, const std::string& word, std::uint32_t number) {
  Session session(tool);
  session.open();
  const bool isPurse = word == "delpurse";
  const std::string what = (isPurse ? "purse " : "group ") + std::to_string(number);
  const std::string answer = exchangeForNumber(session, word + ' ' + std::to_string(number), word);
  if (isListed(session, isPurse ? "listpurses" : "listgrp", number))
    failRefused(word, answer, what + " is still there");
  confirm(tool, answer, {{isPurse ? "purse" : "group", number}}, what + " is deleted");
}

void addGroup(const Tool& tool) {
  Session session(tool);
  session.open();
  const std::string answer = exchangeForNumber(session, "addgrp", "addgrp");
  const std::int64_t group = *parseDecimal(answer);
  if (!isListed(session, "listgrp", group)) failRefused("addgrp", answer, "the group is not there");
  confirm(tool, answer, {{"group", group}}, "group " + answer + " is added");
}

}  // namespace mvx2tool
