// The command line: which commands and options there are, and which command a line asks for.
#ifndef MVX2TOOL_GRAMMAR_H
#define MVX2TOOL_GRAMMAR_H

#include "commands.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace mvx2tool {

class Grammar {
 public:
  explicit Grammar(Tool& tool);

  // Throws CLI::ParseError for a line that is not understood, or that asks for help.
  void parse(int argc, char** argv);
  // Runs the command that the line asks for.
  void run() const { m_run(); }
  // Shows the help or version that a parse error stands for; whether it was one of these.
  bool showHelp(const CLI::ParseError& error) const;
  // What is wrong with the line, for people.
  std::string complaint(const CLI::ParseError& error) const;
  bool isVerbose() const { return m_verbose; }

 private:
  using Run = std::function<void()>;

  CLI::App* addGroup(const std::string& name, const std::string& description);
  CLI::App* add(CLI::App* parent, const std::string& name, const std::string& description,
                const std::string& example, const Run& run);
  CLI::Option* addNumber(CLI::App* command, const std::string& name, const std::string& description);
  void addGlobalOptions();
  void addLooking();
  void addCard();
  void addLists();
  void addKeys();
  void addControl();
  void addSending();
  void addBackups();
  void addSam();
  void addHelpers();

  Tool& m_tool;
  Arguments m_arguments;
  bool m_verbose = false;
  Run m_run;
  CLI::App m_app{"Reads, writes and watches an MVX card terminal and its secure access module.", "mvx2"};
};

// A script that completes what this grammar knows, for "bash" or "zsh".
std::string completionScript(const CLI::App& app, const std::string& shell);

}  // namespace mvx2tool

#endif
