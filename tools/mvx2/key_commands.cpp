#include "commands.h"
#include "secrets.h"
#include "session.h"

#include <algorithm>

namespace mvx2tool {

namespace {

void checkName(const std::string& name) {
  const auto& keys = allKeys();
  const auto isNamed = [&name](const Key& key) { return name == key.name; };
  if (std::none_of(keys.begin(), keys.end(), isNamed))
    failUsage("no key has this name", "keys are freekey1, freekey2, madkey and ukeya");
}

}  // namespace

void getKey(const Tool& tool, const Arguments& arguments) {
  checkName(arguments.name);
  Session session(tool);
  session.open();
  const Secret key = session.readKey(arguments.name);
  const Secret shown(arguments.reveal ? key.text() : key.masked());
  const Secret line((tool.output.quiet ? "" : arguments.name + "  ") + shown.text() + '\n');
  tool.output.show({{"name", arguments.name}, {"revealed", arguments.reveal}, {"key", shown.text()}},
                   line.text());
}

void setKey(const Tool& tool, const Arguments& arguments) {
  checkName(arguments.name);
  const Secret key = readSecret(arguments.file);
  Session session(tool);
  session.open();
  session.writeKey(arguments.name, key);
  tool.output.show(
      {{"name", arguments.name}, {"key", key.masked()}},
      tool.output.quiet ? "" : arguments.name + " is now " + key.masked() + " (read back and equal)\n");
}

}  // namespace mvx2tool
