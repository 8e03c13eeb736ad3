#include "grammar.h"

#include "session.h"
#include "text.h"
#include "values.h"

#include <algorithm>
#include <cctype>
#include <iostream>

namespace mvx2tool {

namespace {

// -5 and the like: no option looks so.
bool isNegativeNumber(const std::string& word) {
  return word.size() > 1 && word[0] == '-' && std::isdigit(static_cast<unsigned char>(word[1])) != 0;
}

// Negative numbers are values: they go behind "--", which ends the options. Values are last on every line
// that takes one.
std::vector<std::string> ordered(int argc, char** argv) {
  std::vector<std::string> words;
  std::vector<std::string> numbers;
  bool optionsEnd = false;
  for (const std::string& word : std::vector<std::string>(argv + 1, argv + argc)) {
    optionsEnd = optionsEnd || word == "--";
    (!optionsEnd && isNegativeNumber(word) ? numbers : words).push_back(word);
  }
  if (!numbers.empty() && !optionsEnd) words.emplace_back("--");
  words.insert(words.end(), numbers.begin(), numbers.end());
  return words;
}

std::string versionText() {
  std::string library = velmorin::MVX2Interfaces::getInstance(-1)->dllVersion();
  for (char& c : library)
    if (c == '\t') c = ' ';
  return "mvx2 " MVX2_TOOL_VERSION "\nlibrary: " + library;
}

}  // namespace

Grammar::Grammar(Tool& tool) : m_tool(tool) {
  m_app.require_subcommand(1);
  m_app.fallthrough();
  m_app.set_version_flag("--version", versionText, "Print the versions of the tool and the library");
  addGlobalOptions();
  addLooking();
  addCard();
  addLists();
  addKeys();
  addControl();
  addSending();
  addBackups();
  addSam();
  addHelpers();
  m_app.footer(
      "Exit codes:\n"
      "  0 done    2 usage    3 no reader or no pcscd    4 no answer    5 the terminal refused\n"
      "  6 SAM authentication failed    7 file    8 interrupted\n"
      "Example:\n"
      "  mvx2 status\n"
      "  mvx2 --attempts 10 get credit --json");
}

void Grammar::addGlobalOptions() {
  m_app
      .add_option_function<std::string>(
          "--reader",
          [this](const std::string& kind) {
            m_tool.reader = kind == "mvx3" ? Select::mvx3 : kind == "other" ? Select::other : Select::any;
          },
          "Which terminal, if there are several: any, mvx3 or other")
      ->check(CLI::IsMember({"any", "mvx3", "other"}));
  m_app.add_option("--attempts", m_tool.attempts, "How often to try to connect, a second apart")
      ->check(CLI::Range(1, 1000000))
      ->capture_default_str();
  m_app.add_flag("--json", m_tool.output.json, "One JSON object on one line instead of text; errors too");
  m_app.add_flag("--quiet,-q", m_tool.output.quiet, "Only what was asked for, and errors");
  m_app.add_flag("-v,--verbose", m_verbose, "The library's own log lines on standard error");
}

CLI::App* Grammar::addGroup(const std::string& name, const std::string& description) {
  CLI::App* const group = m_app.add_subcommand(name, description);
  group->require_subcommand(1);
  return group;
}

CLI::App* Grammar::add(CLI::App* parent, const std::string& name, const std::string& description,
                       const std::string& example, const Run& run) {
  CLI::App* const command = parent->add_subcommand(name, description);
  const std::string path = parent == &m_app ? name : parent->get_name() + ' ' + name;
  command->footer("Options of every command: mvx2 --help\nExample:\n  mvx2 " + path +
                  (example.empty() ? "" : " " + example));
  if (parent != &m_app)
    parent->footer("Options of every command: mvx2 --help\nExample:\n  mvx2 " + path +
                   (example.empty() ? "" : " " + example));
  command->callback([this, path, run] {
    m_tool.output.command = path;
    m_run = run;
  });
  return command;
}

CLI::Option* Grammar::addNumber(CLI::App* command, const std::string& name, const std::string& description) {
  return command->add_option(name, m_arguments.number, description)->check(CLI::Range(0, 2147483647));
}

void Grammar::addLooking() {
  add(&m_app, "status", "Show reader, versions, mode, serial number, card and SAM", "",
      [this] { showStatus(m_tool); });
  add(&m_app, "values", "List every value with type, range, access and meaning", "",
      [this] { showValues(m_tool); });
  CLI::App* const get =
      add(&m_app, "get", "Read values", "credit debit", [this] { getValues(m_tool, m_arguments); });
  get->add_option("NAME", m_arguments.names, "Names of values");
  get->add_flag("--all", m_arguments.all, "Every value");
  CLI::App* const set = add(&m_app, "set", "Write a value and read it back", "issuer 0x1234",
                            [this] { setValue(m_tool, m_arguments); });
  set->add_option("NAME", m_arguments.name, "The value's name")->required();
  set->add_option("VALUE", m_arguments.value, "Decimal, or 0x and hexadecimal")->required();
  CLI::App* const watched = add(&m_app, "watch", "Print changes until interrupted",
                                "credit switch --interval 0.5", [this] { watch(m_tool, m_arguments); });
  watched->add_option("NAME", m_arguments.names, "Names of values; all of them when left out");
  watched->add_option("--interval", m_arguments.interval, "Seconds between two looks")
      ->check(CLI::Range(0.01, 86400.0))
      ->capture_default_str();
}

void Grammar::addCard() {
  CLI::App* const card = addGroup("card", "Act on the card that lies on the terminal");
  const auto addAction = [this, card](const std::string& word, const std::string& description) {
    add(card, word, description, "", [this, word] { actOnCard(m_tool, word); });
  };
  addAction("fread", "Read the card (the terminal's fread)");
  addAction("write", "Write the card");
  addAction("persoread", "Read the personalisation");
  addAction("persocreate", "Create the personalisation");
  addAction("read", "Read the card");
}

void Grammar::addLists() {
  CLI::App* const purse = addGroup("purse", "Purses of the card");
  const auto addTaking = [this, purse](const std::string& name, const std::string& word,
                                       const std::string& description) {
    CLI::App* const command =
        add(purse, name, description, "2", [this, word] { takePurse(m_tool, word, m_arguments.number); });
    addNumber(command, "PURSE", "The purse's number")->required();
  };
  addTaking("set", "purse", "Write the number of the purse in use");
  addTaking("change", "chpurse", "Change to a purse");
  addNumber(add(purse, "delete", "Delete a purse", "2",
                [this] { deleteNumber(m_tool, "delpurse", m_arguments.number); }),
            "PURSE", "The purse's number")
      ->required();
  add(purse, "list", "List the purses", "", [this] { listNumbers(m_tool, "listpurses"); });

  CLI::App* const group = addGroup("group", "Groups of the card");
  add(group, "add", "Add a group", "", [this] { mvx2tool::addGroup(m_tool); });
  addNumber(add(group, "delete", "Delete a group", "4",
                [this] { deleteNumber(m_tool, "delgrp", m_arguments.number); }),
            "GROUP", "The group's number")
      ->required();
  add(group, "list", "List the groups", "", [this] { listNumbers(m_tool, "listgrp"); });

  CLI::App* const sectors = addGroup("sectors", "The sector word");
  CLI::App* const set = add(sectors, "set", "Write the sector word", "0x000E", [this] {
    m_arguments.name = "sectors";
    setValue(m_tool, m_arguments);
  });
  set->add_option("WORD", m_arguments.value, "0 to 0xFFFF")->required();
  add(sectors, "get", "Read the sector word", "", [this] {
    m_arguments.names = {"sectors"};
    getValues(m_tool, m_arguments);
  });
}

void Grammar::addKeys() {
  CLI::App* const key = addGroup("key", "Keys: freekey1, freekey2, madkey and ukeya");
  CLI::App* const set = add(key, "set", "Write a key, which comes from a file or standard input",
                            "madkey --file new.key", [this] { setKey(m_tool, m_arguments); });
  set->add_option("NAME", m_arguments.name, "The key's name")->required();
  set->add_option("--file", m_arguments.file, "File with the key on one line; - is standard input")
      ->default_val("-");
  CLI::App* const get =
      add(key, "get", "Show a key, masked", "madkey --reveal", [this] { getKey(m_tool, m_arguments); });
  get->add_option("NAME", m_arguments.name, "The key's name")->required();
  get->add_flag("--reveal", m_arguments.reveal, "Show it in clear");
}

void Grammar::addControl() {
  addNumber(add(&m_app, "beep", "Beep", "3", [this] { mvx2tool::beep(m_tool, m_arguments.number); }), "N",
            "Duration; the terminal's own when left out");
  add(&m_app, "reboot", "Restart the terminal", "", [this] { mvx2tool::reboot(m_tool); });
  add(&m_app, "quit", "Bring the terminal back to its command mode", "",
      [this] { changeMode(m_tool, "q", command_prompt); });
  add(&m_app, "online", "Bring the terminal to its on-line mode", "",
      [this] { changeMode(m_tool, "online", online_prompt); });
}

void Grammar::addSending() {
  CLI::App* const send = add(&m_app, "send", "Send a line and show the answer", "version",
                             [this] { sendText(m_tool, m_arguments); });
  send->add_option("TEXT", m_arguments.value, "The line, up to 63 bytes")->required();
  send->add_flag("--raw", m_arguments.raw,
                 R"(Send it as it is, \r \n \t \\ and \xNN replaced, and show all that comes back)");
  add(&m_app, "apdu", "Send an APDU to the card and show its reply", "FFCA000000",
      [this] { sendApdu(m_tool, m_arguments.value); })
      ->add_option("HEX", m_arguments.value, "The APDU's bytes, up to 64")
      ->required();
}

void Grammar::addBackups() {
  const auto addFile = [this](CLI::App* command) {
    command->add_option("FILE", m_arguments.file, "The backup")->required();
    return command;
  };
  addFile(add(&m_app, "backup", "Save all writable settings", "terminal.json", [this] {
    makeBackup(m_tool, m_arguments);
  }))->add_flag("--keys", m_arguments.keys, "Save the keys too, in clear");
  addFile(add(&m_app, "diff", "Show where terminal and backup differ", "terminal.json",
              [this] { showDifferences(m_tool, m_arguments); }));
  addFile(add(&m_app, "restore", "Write what differs from a backup, and read it back",
              "terminal.json --dry-run", [this] { restoreBackup(m_tool, m_arguments); }))
      ->add_flag("--dry-run", m_arguments.dryRun, "Only show what would change");
}

void Grammar::addSam() {
  CLI::App* const sam = addGroup("sam", "The secure access module");
  add(sam, "unlock", "Unlock the module", "--key-file sam.key",
      [this] { unlockSam(m_tool, m_arguments.file); })
      ->add_option("--key-file", m_arguments.file, "File with 32 hexadecimal digits; - is standard input")
      ->required();
  add(sam, "status", "Show the module's reader and serial number", "", [this] { showSam(m_tool); });
}

void Grammar::addHelpers() {
  add(&m_app, "doctor", "Check everything from the daemon to the SAM, and say what mends it", "",
      [this] { examine(m_tool); });
  add(&m_app, "explain", "Say what a code means", "0x8010001D",
      [this] { mvx2tool::explain(m_tool, m_arguments.value); })
      ->add_option("CODE", m_arguments.value, "A PC/SC status, a status word or a status of the SAM's unlock")
      ->required();
  add(&m_app, "completion", "Print a script that completes commands in a shell", "bash > ~/.mvx2-completion",
      [this] { std::cout << completionScript(m_app, m_arguments.name); })
      ->add_option("SHELL", m_arguments.name, "bash or zsh")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh"}));
}

void Grammar::parse(int argc, char** argv) {
  std::vector<std::string> words = ordered(argc, argv);
  // CLI11 takes the words from the back.
  m_app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
}

std::string Grammar::complaint(const CLI::ParseError& error) const {
  const std::vector<std::string> unknown = m_app.remaining(true);
  if (!unknown.empty()) return "not understood: " + printable(join(unknown, " "));
  std::string text = error.what();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return printable(trimmed(text));
}

bool Grammar::showHelp(const CLI::ParseError& error) const {
  return error.get_exit_code() == 0 && m_app.exit(error) == 0;
}

}  // namespace mvx2tool
