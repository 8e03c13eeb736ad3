// The commands, one function each, and what the command line gives them.
#ifndef MVX2TOOL_COMMANDS_H
#define MVX2TOOL_COMMANDS_H

#include "tool.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mvx2tool {

// The arguments of the one command that runs.
struct Arguments {
  std::vector<std::string> names = {};
  std::string name = {};
  std::string value = {};
  std::string file = {};
  std::uint32_t number = 0;
  double interval = 1.0;
  bool all = false;
  bool raw = false;
  bool reveal = false;
  bool keys = false;
  bool dryRun = false;
};

// status.cpp
void showStatus(const Tool& tool);

// value_commands.cpp
void showValues(const Tool& tool);
void getValues(const Tool& tool, const Arguments& arguments);
void setValue(const Tool& tool, const Arguments& arguments);

// card_commands.cpp: `word` is the command word that the terminal gets
void actOnCard(const Tool& tool, const std::string& word);
void listNumbers(const Tool& tool, const std::string& word);
void takePurse(const Tool& tool, const std::string& word, std::uint32_t purse);
void deleteNumber(const Tool& tool, const std::string& word, std::uint32_t number);
void addGroup(const Tool& tool);

// key_commands.cpp
void getKey(const Tool& tool, const Arguments& arguments);
void setKey(const Tool& tool, const Arguments& arguments);

// control_commands.cpp
void beep(const Tool& tool, std::uint32_t duration);
void changeMode(const Tool& tool, const std::string& word, char prompt);
void reboot(const Tool& tool);
void sendText(const Tool& tool, const Arguments& arguments);
void sendApdu(const Tool& tool, const std::string& hexadecimal);

// backup_commands.cpp
void makeBackup(const Tool& tool, const Arguments& arguments);
void showDifferences(const Tool& tool, const Arguments& arguments);
void restoreBackup(const Tool& tool, const Arguments& arguments);

// watch.cpp
void watch(const Tool& tool, const Arguments& arguments);

// sam_commands.cpp
void showSam(const Tool& tool);
void unlockSam(const Tool& tool, const std::string& keyFile);

// doctor.cpp
void examine(const Tool& tool);

// explain.cpp
void explain(const Tool& tool, const std::string& code);

}  // namespace mvx2tool

#endif
