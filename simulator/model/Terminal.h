// A model of an MVX card terminal, made for tests.
//
// It is not a terminal: it knows the command words, the shape of their answers and the three prompts, and
// holds plausible values behind them. What a real terminal does with a value, how long it takes, which ranges
// it accepts and what its error texts are, the model does not claim to know: its ranges, defaults and error
// texts are its own.
//
// Plain state machine: bytes in, bytes out. No input or output, no thread, no clock.
#ifndef MVX2SIM_MODEL_TERMINAL_H
#define MVX2SIM_MODEL_TERMINAL_H

#include "TerminalValues.h"
#include "bytes.h"

#include <optional>
#include <string>
#include <vector>

namespace mvx2sim {

class Terminal {
 public:
  // An answer never holds more bytes: with the reader's two status bytes it fills a reply of 69 bytes.
  static constexpr std::size_t max_answer = 67;

  // Takes the bytes of a text command. A carriage return ends a line; the answer to it is the echoed line and
  // carriage return and line feed, the answer's lines each with both, and the prompt ('>' command mode, '#'
  // boot loader, '$' on-line mode). Bytes without a carriage return are echoed and wait for it.
  //
  // An echo that would make the answer too long is cut.
  Bytes text(const Bytes& carried);

  // Takes the bytes of a raw command, an APDU for the card: FF CA 00 00 00 is answered with the card's number
  // and 90 00, anything else with 6D 00; 67 00 when it is too short, 69 85 when no card lies on the terminal.
  Bytes raw(const Bytes& carried) const;

  // Behind the terminal's back: every word that holds a value, "listpurses" and "listgrp" (numbers with
  // blanks between them), "state" ("command", "boot", "online"), "bootlines" (lines that the boot loader will
  // still answer), "beeps" (how often it has beeped) and "frozen" (1: it answers the writing of a value as
  // ever, and keeps the old one). set() may write what a command line may only read.
  std::optional<std::string> get(const std::string& name) const;
  bool set(const std::string& name, const std::string& value);

 private:
  enum class State { command, boot, online };
  using Lines = std::vector<std::string>;
  using Argument = std::optional<std::string>;
  using Handler = Lines (Terminal::*)(const Argument&);
  struct Command;

  static Handler find(const std::string& word);
  Bytes answer(const std::string& line);
  Lines execute(const std::string& line);
  Lines executeInBootLoader(const std::string& word);
  Lines value(const std::string& word, const Argument& argument);
  char prompt() const;
  bool setState(const std::string& name);

  Lines version(const Argument& argument);
  Lines bootVersion(const Argument& argument);
  Lines reboot(const Argument& argument);
  Lines online(const Argument& argument);
  Lines quit(const Argument& argument);
  Lines beep(const Argument& argument);
  Lines cardAction(const Argument& argument);
  Lines listPurses(const Argument& argument);
  Lines changePurse(const Argument& argument);
  Lines deletePurse(const Argument& argument);
  Lines listGroups(const Argument& argument);
  Lines addGroup(const Argument& argument);
  Lines deleteGroup(const Argument& argument);

  TerminalValues m_values;
  NumberList m_purses{{1, 2, 5}};
  NumberList m_groups{{1, 4}};
  State m_state = State::command;
  int m_bootLines = 0;
  long m_beeps = 0;
  bool m_isFrozen = false;
  std::string m_typed;  // a line that still waits for its carriage return
};

}  // namespace mvx2sim

#endif
