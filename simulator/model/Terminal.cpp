#include "Terminal.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace mvx2sim {

namespace {

constexpr const char* unknown = "ERR unknown";  // no such word, or not in this mode
constexpr const char* bad_value = "ERR value";  // out of range, not a number, missing, or only to be read
constexpr const char* no_card = "ERR card";     // an action on a card while none lies on the terminal
constexpr const char* done = "1";

// How many lines the boot loader answers after a reboot before it starts the terminal's program.
constexpr int lines_in_boot_loader = 3;
constexpr std::size_t max_typed = 64;

std::string join(const std::vector<std::string>& texts) {
  std::string line;
  for (const std::string& text : texts) line += (line.empty() ? "" : " ") + text;
  return line;
}

}  // namespace

struct Terminal::Command {
  const char* word;
  Handler handler;
};

Terminal::Handler Terminal::find(const std::string& word) {
  static constexpr Command commands[] = {
      {"version", &Terminal::version},
      {"vboot", &Terminal::bootVersion},
      {"reboot", &Terminal::reboot},
      {"online", &Terminal::online},
      {"q", &Terminal::quit},
      {"beep", &Terminal::beep},
      {"read", &Terminal::cardAction},
      {"fread", &Terminal::cardAction},
      {"write", &Terminal::cardAction},
      {"persoread", &Terminal::cardAction},
      {"persocreate", &Terminal::cardAction},
      {"addgrp", &Terminal::addGroup},
      {"delgrp", &Terminal::deleteGroup},
      {"listgrp", &Terminal::listGroups},
      {"listpurses", &Terminal::listPurses},
      {"chpurse", &Terminal::changePurse},
      {"delpurse", &Terminal::deletePurse},
  };
  const auto* const command =
      std::find_if(std::begin(commands), std::end(commands),
                   [&word](const Command& candidate) { return word == candidate.word; });
  return command == std::end(commands) ? nullptr : command->handler;
}

Bytes Terminal::text(const Bytes& carried) {
  const auto end = std::find(carried.begin(), carried.end(), '\r');
  m_typed.append(carried.begin(), end);
  m_typed.resize(std::min(m_typed.size(), max_typed));
  if (end == carried.end()) return {carried.begin(), carried.end()};

  const std::string line = std::exchange(m_typed, std::string(end + 1, carried.end()));
  return answer(line);
}

Bytes Terminal::answer(const std::string& line) {
  std::string rest = "\r\n";
  for (const std::string& answerLine : execute(line)) rest += answerLine + "\r\n";
  rest += prompt();
  const std::string whole = line.substr(0, max_answer - rest.size()) + rest;
  return {whole.begin(), whole.end()};
}

char Terminal::prompt() const {
  switch (m_state) {
    case State::boot:
      return '#';
    case State::online:
      return '$';
    case State::command:
      break;
  }
  return '>';
}

Terminal::Lines Terminal::execute(const std::string& line) {
  const std::size_t blank = line.find(' ');
  const std::string word = line.substr(0, blank);
  const Argument argument =
      blank == std::string::npos ? std::nullopt : std::make_optional(line.substr(blank + 1));

  if (m_state == State::boot && m_bootLines == 0) m_state = State::command;
  if (m_state == State::boot) {
    --m_bootLines;
    return executeInBootLoader(word);
  }
  if (line.empty()) return {};
  if (const Handler handler = find(word); handler != nullptr) return (this->*handler)(argument);
  if (m_values.holds(word)) return value(word, argument);
  return {unknown};
}

Terminal::Lines Terminal::executeInBootLoader(const std::string& word) {
  if (word.empty()) return {};
  if (word == "vboot") return bootVersion({});
  if (word == "q") return quit({});
  return {unknown};
}

Terminal::Lines Terminal::value(const std::string& word, const Argument& argument) {
  if (!argument) return {m_values.print(word)};
  TerminalValues written = m_values;
  if (!written.write(word, *argument, TerminalValues::Access::line)) return {bad_value};
  // A written number is answered in decimal whatever base it is read in.
  const auto number = parseNumber(*argument);
  const std::string said = number && !written.isKey(word) ? std::to_string(*number) : written.print(word);
  if (!m_isFrozen) m_values = std::move(written);
  return {said};
}

Terminal::Lines Terminal::version(const Argument& /*argument*/) { return {"MVX3 SIM V1.0"}; }

Terminal::Lines Terminal::bootVersion(const Argument& /*argument*/) { return {"BOOT SIM V1.0"}; }

Terminal::Lines Terminal::reboot(const Argument& /*argument*/) {
  m_state = State::boot;
  m_bootLines = lines_in_boot_loader;
  return {};
}

Terminal::Lines Terminal::online(const Argument& /*argument*/) {
  m_state = State::online;
  return {};
}

Terminal::Lines Terminal::quit(const Argument& /*argument*/) {
  m_state = State::command;
  return {};
}

Terminal::Lines Terminal::beep(const Argument& argument) {
  const auto duration = parseNumber(argument.value_or(""));
  const bool isPlain = !argument || argument->empty();
  if (!isPlain && (!duration || *duration < 0)) return {bad_value};
  ++m_beeps;
  return {};
}

Terminal::Lines Terminal::cardAction(const Argument& argument) {
  if (argument) return {bad_value};
  return {m_values.number("switch") == 0 ? no_card : done};
}

Terminal::Lines Terminal::listPurses(const Argument& argument) {
  return argument ? Lines{bad_value} : m_purses.print();
}

Terminal::Lines Terminal::changePurse(const Argument& argument) {
  const auto purse = parseNumber(argument.value_or(""));
  if (!purse || !m_purses.add(*purse)) return {bad_value};
  m_values.setNumber("purse", *purse);
  return {std::to_string(*purse)};
}

Terminal::Lines Terminal::deletePurse(const Argument& argument) {
  const auto purse = parseNumber(argument.value_or(""));
  if (!purse || !m_purses.remove(*purse)) return {bad_value};
  if (m_values.number("purse") == *purse) m_values.setNumber("purse", m_purses.frontOr(0));
  return {std::to_string(*purse)};
}

Terminal::Lines Terminal::listGroups(const Argument& argument) {
  return argument ? Lines{bad_value} : m_groups.print();
}

Terminal::Lines Terminal::addGroup(const Argument& argument) {
  if (m_values.number("switch") == 0) return {no_card};
  const int group = m_groups.firstFree();
  if (argument || !m_groups.add(group)) return {bad_value};
  return {std::to_string(group)};
}

Terminal::Lines Terminal::deleteGroup(const Argument& argument) {
  const auto group = parseNumber(argument.value_or(""));
  if (!group || !m_groups.remove(*group)) return {bad_value};
  return {std::to_string(*group)};
}

Bytes Terminal::raw(const Bytes& carried) const {
  if (m_values.number("switch") == 0) return {0x69, 0x85};
  if (carried.size() < 4) return {0x67, 0x00};
  if (carried != Bytes{0xFF, 0xCA, 0x00, 0x00, 0x00}) return {0x6D, 0x00};
  const auto card = static_cast<std::uint32_t>(m_values.number("cardid"));
  const auto byte = [card](unsigned shift) { return static_cast<unsigned char>((card >> shift) & 0xFFU); };
  return {byte(24), byte(16), byte(8), byte(0), 0x90, 0x00};
}

std::optional<std::string> Terminal::get(const std::string& name) const {
  if (m_values.holds(name)) return m_values.print(name);
  if (name == "listpurses") return join(m_purses.print());
  if (name == "listgrp") return join(m_groups.print());
  if (name == "beeps") return std::to_string(m_beeps);
  if (name == "bootlines") return std::to_string(m_bootLines);
  if (name == "frozen") return std::to_string(static_cast<int>(m_isFrozen));
  if (name != "state") return std::nullopt;
  const char sign = prompt();
  return sign == '>' ? "command" : sign == '#' ? "boot" : "online";
}

bool Terminal::setState(const std::string& name) {
  if (name == "boot") {
    reboot({});
  } else if (name == "online") {
    online({});
  } else if (name == "command") {
    quit({});
  } else {
    return false;
  }
  return true;
}

bool Terminal::set(const std::string& name, const std::string& value) {
  if (m_values.holds(name)) return m_values.write(name, value, TerminalValues::Access::control);
  if (name == "listpurses") return m_purses.replace(splitWords(value));
  if (name == "listgrp") return m_groups.replace(splitWords(value));
  if (name == "state") return setState(value);
  const auto number = parseNumber(value);
  if (!number || *number < 0) return false;
  if (name == "beeps") {
    m_beeps = *number;
  } else if (name == "bootlines") {
    m_bootLines = static_cast<int>(std::min<std::int64_t>(*number, 1000000));
  } else if (name == "frozen" && *number <= 1) {
    m_isFrozen = *number == 1;
  } else {
    return false;
  }
  return true;
}

}  // namespace mvx2sim
