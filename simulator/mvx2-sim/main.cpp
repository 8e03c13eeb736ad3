// mvx2-sim: simulated readers behind a real PC/SC daemon of their own.
#include "../control/lines.h"
#include "Failure.h"
#include "Settings.h"
#include "places.h"
#include "readers.h"
#include "run.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace {

using mvx2sim::Failure;
using mvx2sim::Settings;

namespace places = mvx2sim::places;

void checkInside() {
  if (access(places::supervisor, F_OK) != 0)
    throw Failure("this works only inside a simulation: mvx2-sim run -- COMMAND");
}

// What a reader or the supervisor replied; a refusal becomes a failure.
std::string ask(const std::string& socket, const std::string& line) {
  const auto reply = mvx2sim::askLine(socket, line);
  if (!reply) throw mvx2sim::systemFailure("nobody answers at " + socket);
  if (reply->rfind("ERR ", 0) == 0) throw Failure(reply->substr(4));
  return *reply;
}

std::string askReader(const std::string& device, const std::string& line) {
  checkInside();
  mvx2sim::readerName(device);  // fails when the simulation has none
  if (!mvx2sim::isPlugged(device)) throw Failure("the reader is out: mvx2-sim reader in " + device);
  return ask(std::string(places::home) + "/" + device + ".control", line);
}

std::string join(const std::string& verb, const std::vector<std::string>& words) {
  std::string line = verb;
  for (const std::string& word : words) line += " " + word;
  return line;
}

void showSimulation() {
  checkInside();
  for (const std::string& device : mvx2sim::devices()) {
    std::cout << device << ": " << mvx2sim::readerName(device) << '\n';
    if (device != "sam") continue;
    std::cout << "sam key: " << askReader(device, "get key") << '\n';
    std::cout << "sam serial: " << askReader(device, "get serial") << '\n';
  }
}

// The parsed command line; the callbacks of the subcommands do the work.
struct Program {
  CLI::App app{"Simulated readers behind a real PC/SC daemon of their own", "mvx2-sim"};
  Settings settings;
  std::string device = "terminal";
  std::string name;
  std::string direction;
  std::vector<std::string> words;
  int status = 0;
};

void addRun(Program& program) {
  Settings& settings = program.settings;
  CLI::App* const run = program.app.add_subcommand("run", "Run a command beside a private daemon");
  run->footer(
      "Give the command after \"--\":\n  mvx2-sim run -- ./read_credit\n"
      "  mvx2-sim run --sam-serial 04AABBCCDDEEFF -- sh -c 'mvx2-sim info; ./host'\n"
      "Its exit status is passed on: 128 and the number of a signal that ended it, 127 when there is no "
      "such\n"
      "command, 126 when it cannot be executed, 125 when mvx2-sim itself failed.");
  run->add_flag_callback(
      "--no-terminal", [&settings] { settings.terminal = false; }, "Without the terminal's reader");
  run->add_flag_callback(
      "--no-sam", [&settings] { settings.sam = false; }, "Without the SAM's reader");
  run->add_flag("-v,--verbose", settings.verbose, "The daemon logs every APDU to standard error");
  const CLI::Validator plainName(
      [](const std::string& name) {
        const auto isPlain = [](unsigned char c) { return c >= ' ' && c < 0x7F && c != '<' && c != '&'; };
        const bool fits = !name.empty() && name.size() <= 100;
        return fits && std::all_of(name.begin(), name.end(), isPlain) ? "" : "not a name for a reader";
      },
      "NAME");
  run->add_option("--terminal-name", settings.terminalName, "Name of the terminal's reader")
      ->check(plainName)
      ->capture_default_str();
  run->add_option("--sam-name", settings.samName, "Name of the SAM's reader")
      ->check(plainName)
      ->capture_default_str();
  const auto hexDigits = [](std::size_t digits) {
    return CLI::Validator(
        [digits](const std::string& text) {
          const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
          const bool isHex = text.size() == digits && std::all_of(text.begin(), text.end(), isDigit);
          return isHex ? "" : "not " + std::to_string(digits) + " hexadecimal digits";
        },
        "HEX");
  };
  run->add_option("--sam-key", settings.samKey, "The SAM's unlock key, 16 bytes")
      ->check(hexDigits(32))
      ->capture_default_str();
  run->add_option("--sam-serial", settings.samSerial, "The SAM's serial number, 7 bytes")
      ->check(hexDigits(14))
      ->capture_default_str();
  run->callback([&program] {
    if (program.settings.command.empty()) throw Failure("which command? Give it after \"--\"");
    program.status = mvx2sim::run(program.settings);
  });
}

void addDevice(CLI::App* subcommand, Program& program, const std::string& option) {
  subcommand->add_option(option, program.device, "terminal or sam")
      ->check(CLI::IsMember({"terminal", "sam"}))
      ->capture_default_str();
}

void addDirection(CLI::App* subcommand, Program& program) {
  subcommand->add_option("direction", program.direction, "in or out")
      ->required()
      ->check(CLI::IsMember({"in", "out"}));
  addDevice(subcommand, program, "reader");
}

void addControl(Program& program) {
  CLI::App* const get = program.app.add_subcommand("get", "Print a value of a reader");
  get->footer("Example:\n  mvx2-sim get credit\n  mvx2-sim get --reader sam serial");
  addDevice(get, program, "-r,--reader");
  get->add_option("name", program.name, "The value's name")->required();
  get->callback([&program] { std::cout << askReader(program.device, "get " + program.name) << '\n'; });

  CLI::App* const set = program.app.add_subcommand("set", "Set a value behind the terminal's back");
  set->footer("Example:\n  mvx2-sim set credit 500\n  mvx2-sim set listpurses 3 7 12");
  addDevice(set, program, "-r,--reader");
  set->add_option("name", program.name, "The value's name")->required();
  set->add_option("value", program.words, "The value")->required();
  set->callback([&program] { askReader(program.device, join("set " + program.name, program.words)); });

  CLI::App* const fault = program.app.add_subcommand("fault", "Let the next exchanges go wrong");
  fault->footer(
      "A kind with its numbers, then how many exchanges (1 when left out), then \"after\" and how many "
      "exchanges\n"
      "pass first:\n"
      "  transmit              fails              data LENGTH      so many bytes before the last two\n"
      "  delay MILLISECONDS    comes late         truncate LENGTH  cut to so many bytes\n"
      "  first XX              other first byte   extend LENGTH    filled up with 00\n"
      "  byte INDEX XX         other byte         version          (SAM) version record does not match\n"
      "  sw XXXX               other last two     mac              (SAM) wrong proof in the unlock\n"
      "Example:\n  mvx2-sim fault transmit 2\n  mvx2-sim fault first 90 after 1\n  mvx2-sim fault clear");
  addDevice(fault, program, "-r,--reader");
  fault->add_option("words", program.words, "The fault, or \"clear\"")->required();
  fault->callback([&program] { askReader(program.device, join("fault", program.words)); });
}

void addMovements(Program& program) {
  CLI::App* const card = program.app.add_subcommand("card", "Take a reader's card out or put it back in");
  card->footer("Example:\n  mvx2-sim card out\n  mvx2-sim card in sam");
  addDirection(card, program);
  card->callback([&program] {
    askReader(program.device, "card " + program.direction);
    mvx2sim::awaitCard(program.device, program.direction == "in");
  });

  CLI::App* const reader = program.app.add_subcommand("reader", "Pull a reader out or plug it back in");
  reader->footer("Example:\n  mvx2-sim reader out\n  mvx2-sim reader in sam");
  addDirection(reader, program);
  reader->callback([&program] {
    checkInside();
    mvx2sim::plug(program.device, program.direction == "in");
  });

  CLI::App* const daemon = program.app.add_subcommand("daemon", "Kill the daemon or start it again");
  daemon->footer("Example:\n  mvx2-sim daemon restart");
  daemon->add_option("verb", program.name, "stop, start or restart")
      ->required()
      ->check(CLI::IsMember({"stop", "start", "restart"}));
  daemon->callback([&program] {
    checkInside();
    ask(places::supervisor, program.name);
  });

  CLI::App* const info =
      program.app.add_subcommand("info", "Print the readers' names and the SAM's key and serial");
  info->footer("Example:\n  mvx2-sim run -- mvx2-sim info");
  info->callback(showSimulation);
}

// CLI11 gets what stands before "--", the command what stands behind it.
void split(int argc, char** argv, std::vector<std::string>& options, std::vector<std::string>& command) {
  std::vector<std::string>* side = &options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--" && side == &options) {
      side = &command;
    } else {
      side->push_back(argument);
    }
  }
  std::reverse(options.begin(), options.end());
}

}  // namespace

int main(int argc, char** argv) try {
  Program program;
  program.app.require_subcommand(1);
  program.app.set_version_flag("--version", MVX2_SIM_VERSION);
  addRun(program);
  addControl(program);
  addMovements(program);
  try {
    std::vector<std::string> options;
    split(argc, argv, options, program.settings.command);
    program.app.parse(options);
  } catch (const CLI::ParseError& error) {
    return program.app.exit(error) == 0 ? 0 : mvx2sim::exit_failure;
  }
  return program.status;
} catch (const std::exception& error) {
  std::cerr << "mvx2-sim: " << error.what() << std::endl;
  return mvx2sim::exit_failure;
}
