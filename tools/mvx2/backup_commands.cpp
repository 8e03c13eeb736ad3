#include "backup_file.h"
#include "commands.h"
#include "interrupt.h"
#include "session.h"
#include "text.h"

#include <strings.h>

namespace mvx2tool {

namespace {

// One setting or key in which the terminal and a backup differ.
struct Change {
  std::string name;
  Json from;  // what JSON shows; a key is masked
  Json to;
  std::string shownFrom;
  std::string shownTo;
  const std::pair<Value, std::int64_t>* setting = nullptr;  // one of the two, in the backup
  const Secret* key = nullptr;
  std::string result = {};                // "restored", "refused", "not kept", "left" or "planned"
  std::optional<std::string> reply = {};  // what the terminal said when it refused
};

Change changeOf(const std::pair<Value, std::int64_t>& wanted, const Reading& held) {
  const auto& [value, number] = wanted;
  return {value.name,         toJson(value, held),    toJson(value, {number}),
          print(value, held), print(value, {number}), &wanted};
}

Change changeOf(const std::string& name, const Secret& wanted, const Secret& held) {
  return {name,    held.masked(), wanted.masked(), held.masked(), wanted.masked() + " (differs)",
          nullptr, &wanted};
}

std::vector<Change> differences(Session& session, const Backup& backup) {
  std::vector<Change> changes;
  for (const auto& setting : backup.settings) {
    const Reading held = session.read(setting.first);
    if (held != Reading{setting.second}) changes.push_back(changeOf(setting, held));
  }
  for (const auto& [name, key] : backup.keys) {
    const Secret held = session.readKey(name);
    if (strcasecmp(held.text().c_str(), key.text().c_str()) != 0)
      changes.push_back(changeOf(name, key, held));
  }
  return changes;
}

Json toJson(const Change& change) {
  Json json = {{"name", change.name}, {"from", change.from}, {"to", change.to}};
  if (!change.result.empty()) json["result"] = change.result;
  if (change.reply) json["reply"] = printable(*change.reply);
  return json;
}

Cell resultCell(const Change& change) {
  if (change.result == "restored") return {change.result, Colour::good};
  if (change.reply) return {change.result + ": \"" + printable(*change.reply) + '"', Colour::bad};
  return {change.result, change.result == "not kept" ? Colour::bad : Colour::warning};
}

std::size_t count(const std::vector<Change>& changes, const char* result) {
  std::size_t found = 0;
  for (const Change& change : changes) found += change.result == result ? 1U : 0U;
  return found;
}

void show(const Tool& tool, const std::vector<Change>& changes, bool dryRun) {
  Table table({"NAME", "TERMINAL", "BACKUP", "RESULT"});
  Json list = Json::array();
  for (const Change& change : changes) {
    table.add({change.name, change.shownFrom, change.shownTo, resultCell(change)});
    list.push_back(toJson(change));
  }
  const Json fields = {{"dry_run", dryRun},
                       {"changes", list},
                       {"restored", count(changes, "restored")},
                       {"refused", count(changes, "refused")},
                       {"not_kept", count(changes, "not kept")},
                       {"left", count(changes, "left")}};
  if (!changes.empty()) return tool.output.show(fields, table);
  tool.output.show(fields, tool.output.quiet ? "" : "no difference\n");
}

// Writes one change; a refusal is noted and the next one follows.
void apply(Session& session, Change& change) {
  try {
    if (change.key != nullptr) {
      session.writeKey(change.name, *change.key);
    } else {
      session.write(change.setting->first, change.setting->second);
    }
    change.result = "restored";
  } catch (const Failure& failure) {
    if (failure.problem().exit != Exit::refused) throw;
    change.reply = failure.problem().reply;
    change.result = change.reply ? "refused" : "not kept";
  }
}

std::string progress(const std::vector<Change>& changes) {
  const std::size_t left = count(changes, "left");
  std::string next;
  for (const Change& change : changes)
    if (next.empty() && change.result == "left") next = change.name;
  return std::to_string(changes.size() - left) + " of " + std::to_string(changes.size()) +
         " changes are made; the next one is " + next;
}

constexpr const char* finish_hint = "run the same restore again: it makes the changes that are left";

void applyAll(const Tool& tool, Session& session, std::vector<Change>& changes) {
  for (Change& change : changes) change.result = "left";
  for (Change& change : changes) {
    if (interrupt::requested()) {
      show(tool, changes, false);
      Problem problem;
      problem.exit = Exit::interrupted;
      problem.message = "interrupted: " + progress(changes);
      problem.operation = "restore";
      problem.hint = finish_hint;
      throw Failure(std::move(problem));
    }
    try {
      apply(session, change);
    } catch (const Failure& failure) {
      show(tool, changes, false);
      Problem problem = failure.problem();
      problem.message += ": " + progress(changes);
      problem.hint += (problem.hint.empty() ? "" : "; then ") + std::string(finish_hint);
      throw Failure(std::move(problem));
    }
  }
}

std::string namesWith(const std::vector<Change>& changes, const char* result) {
  std::vector<std::string> names;
  for (const Change& change : changes)
    if (change.result == result) names.push_back(change.name);
  return join(names, ", ");
}

void failOnRefusals(const std::vector<Change>& changes) {
  const std::string refused = namesWith(changes, "refused");
  const std::string notKept = namesWith(changes, "not kept");
  if (refused.empty() && notKept.empty()) return;
  Problem problem;
  problem.exit = Exit::refused;
  problem.operation = "restore";
  problem.message = "the terminal ";
  if (!refused.empty()) problem.message += "refused " + refused;
  if (!refused.empty() && !notKept.empty()) problem.message += " and ";
  if (!notKept.empty()) problem.message += "did not keep " + notKept;
  problem.hint = "the backup may come from a terminal with another firmware";
  throw Failure(std::move(problem));
}

}  // namespace

void makeBackup(const Tool& tool, const Arguments& arguments) {
  Session session(tool);
  session.open();
  Backup backup;
  backup.version = printable(session.exchange("version").text);
  for (const Value& value : allValues())
    if (value.writable) backup.settings.emplace_back(value, session.read(value).front());
  if (arguments.keys)
    for (const Key& key : allKeys()) backup.keys.emplace_back(key.name, session.readKey(key.name));
  writeBackup(arguments.file, backup);
  const std::string keys = backup.keys.empty() ? "no keys" : std::to_string(backup.keys.size()) + " keys";
  tool.output.show(
      {{"file", arguments.file}, {"settings", backup.settings.size()}, {"keys", backup.keys.size()}},
      tool.output.quiet ? ""
                        : std::to_string(backup.settings.size()) + " settings and " + keys + " are in " +
                              arguments.file + '\n');
}

void showDifferences(const Tool& tool, const Arguments& arguments) {
  const Backup backup = readBackup(arguments.file);
  Session session(tool);
  session.open();
  const std::vector<Change> changes = differences(session, backup);
  Table table({"NAME", "TERMINAL", "BACKUP"});
  Json list = Json::array();
  for (const Change& change : changes) {
    table.add({change.name, change.shownFrom, change.shownTo});
    list.push_back(toJson(change));
  }
  const Json fields = {{"same", changes.empty()}, {"differences", list}};
  if (!changes.empty()) return tool.output.show(fields, table);
  tool.output.show(fields, tool.output.quiet ? "" : "no difference\n");
}

void restoreBackup(const Tool& tool, const Arguments& arguments) {
  const Backup backup = readBackup(arguments.file);
  Session session(tool);
  session.open();
  interrupt::note();
  std::vector<Change> changes = differences(session, backup);
  if (arguments.dryRun) {
    for (Change& change : changes) change.result = "planned";
  } else {
    applyAll(tool, session, changes);
  }
  show(tool, changes, arguments.dryRun);
  failOnRefusals(changes);
}

}  // namespace mvx2tool
