#include "commands.h"
#include "interrupt.h"
#include "session.h"
#include "text.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>

namespace mvx2tool {

namespace {

// What was last seen of a value: a reading, or what the terminal said instead.
struct Seen {  // NOLINT(bugprone-exception-escape): what a JSON value does inside
  Json value = nullptr;
  std::string text = {};
};

bool operator!=(const Seen& a, const Seen& b) { return a.value != b.value || a.text != b.text; }

// Universal time, so that a change of the clock to summer time shows no gap: 2026-01-31T23:59:59.123Z.
std::string timeStamp() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::tm parts{};
  gmtime_r(&now.tv_sec, &parts);
  std::array<char, 32> day{};
  static_cast<void>(std::strftime(day.data(), day.size(), "%Y-%m-%dT%H:%M:%S", &parts));
  const std::string milliseconds = std::to_string(1000 + now.tv_nsec / 1000000).substr(1);
  return std::string(day.data()) + '.' + milliseconds + 'Z';
}

void tell(const Tool& tool, const char* event, const Json& details, const std::string& text) {
  const std::string time = timeStamp();
  Json fields = {{"event", event}, {"time", time}};
  fields.update(details);
  tool.output.show(fields, time + "  " + text + '\n');
}

Seen look(Session& session, const Value& value) {
  try {
    const Reading reading = session.read(value);
    return {toJson(value, reading), print(value, reading)};
  } catch (const Failure& failure) {
    if (failure.problem().exit != Exit::refused) throw;
    return {nullptr, "refused: \"" + printable(failure.problem().reply.value_or("")) + '"'};
  }
}

class Watcher {
 public:
  Watcher(const Tool& tool, std::vector<Value> values)
      : m_tool(tool), m_session(tool), m_values(std::move(values)) {}

  void open() { m_session.open(); }

  // One round over the values. After a failed exchange it waits until the terminal is back.
  void round() {
    try {
      for (const Value& value : m_values) {
        if (interrupt::requested()) return;
        compare(value, look(m_session, value));
      }
    } catch (const Failure& failure) {
      awaitReturn(failure.problem());
    }
  }

 private:
  void compare(const Value& value, Seen now) {
    const auto before = m_seen.find(value.name);
    if (before == m_seen.end()) {
      tell(m_tool, "value", {{"name", value.name}, {"value", now.value}, {"text", now.text}},
           std::string(value.name) + " is " + now.text);
    } else if (before->second != now) {
      const Seen& old = before->second;
      tell(m_tool, "change",
           {{"name", value.name}, {"old", old.value}, {"value", now.value}, {"text", now.text}},
           std::string(value.name) + " " + old.text + " -> " + now.text);
    }
    m_seen[value.name] = std::move(now);
  }

  void awaitReturn(const Problem& problem) {
    const std::string status = problem.status ? ": " + describeStatus(*problem.status) : "";
    tell(m_tool, "lost", {{"reason", problem.message + status}}, "lost: " + problem.message + status);
    // A failed attempt takes a second by itself.
    while (!interrupt::requested()) {
      if (!m_session.tryToOpen()) continue;
      return tell(m_tool, "back", Json::object(), "back");
    }
  }

  const Tool& m_tool;
  Session m_session;
  std::vector<Value> m_values;
  std::map<std::string, Seen> m_seen;
};

}  // namespace

void watch(const Tool& tool, const Arguments& arguments) {
  std::vector<Value> values;
  for (const std::string& name : arguments.names) values.push_back(findValue(name));
  if (values.empty()) values = allValues();
  // A range check lets through what is no number.
  if (!std::isfinite(arguments.interval)) failUsage("the interval is no number");
  const auto interval = std::chrono::milliseconds(static_cast<std::int64_t>(arguments.interval * 1000));

  Watcher watcher(tool, std::move(values));
  watcher.open();
  interrupt::note();
  do {
    watcher.round();
  } while (!interrupt::wait(interval));
}

}  // namespace mvx2tool
