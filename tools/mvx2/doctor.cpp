#include "commands.h"
#include "pcsc_names.h"
#include "sam.h"
#include "session.h"
#include "text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>

namespace mvx2tool {

namespace {

constexpr const char* daemon_socket = "/run/pcscd/pcscd.comm";
constexpr std::uint32_t no_readers = 0x8010002E;
constexpr std::uint32_t not_allowed = 0x8010006A;

enum class Result { good, warning, bad };

struct Check {
  std::string name;
  Result result;
  std::string finding;
  std::string mend = {};
  Exit exit = Exit::done;  // of a bad result
};

const char* nameOf(Result result) {
  return result == Result::good ? "ok" : result == Result::warning ? "warning" : "failed";
}

Colour colourOf(Result result) {
  return result == Result::good ? Colour::good : result == Result::warning ? Colour::warning : Colour::bad;
}

Check checkDaemon(const ReaderList& list) {
  const bool answers = list.status == 0 || list.status == no_readers || list.status == not_allowed;
  if (answers) return {"pcscd", Result::good, "the daemon answers"};
  struct stat entry {};
  const bool hasSocket = stat(daemon_socket, &entry) == 0;
  if (hasSocket && access(daemon_socket, W_OK) != 0)
    return {"pcscd", Result::warning,
            "the daemon's socket is there; the next check tells why it is not reached"};
  return {"pcscd", Result::bad,
          std::string(hasSocket ? "nobody answers at " : "there is no ") + daemon_socket + ": " +
              describeStatus(list.status),
          hasSocket ? "sudo systemctl restart pcscd.socket pcscd.service"
                    : "sudo apt-get install pcscd && sudo systemctl start pcscd.socket",
          Exit::noReader};
}

Check checkPermissions(const ReaderList& list) {
  if (access(daemon_socket, W_OK) != 0)
    return {"permissions", Result::bad, std::string("this user may not write to ") + daemon_socket,
            "sudo systemctl restart pcscd.socket", Exit::noReader};
  if (list.status == not_allowed)
    return {"permissions", Result::bad, describeStatus(list.status), "sudo mvx2 doctor", Exit::noReader};
  return {"permissions", Result::good, "this user may use the daemon"};
}

Check checkReaders(const ReaderList& list, Select select) {
  std::vector<std::string> found;
  for (const std::string& name : list.names) found.push_back(name + " = " + roleOf(name));
  if (!terminals(list, select).empty()) return {"readers", Result::good, join(found, "; ")};
  if (list.names.empty())
    return {"readers", Result::bad, "no reader is plugged in", "lsusb && sudo apt-get install libccid",
            Exit::noReader};
  const bool isOther = !terminals(list, Select::any).empty();
  return {"readers", Result::bad, "no reader of the terminal asked for: " + join(found, "; "),
          isOther ? "mvx2 --reader any doctor" : "lsusb", Exit::noReader};
}

Check checkCandidates(const ReaderList& list, Select select) {
  const std::vector<std::string> candidates = terminals(list, select);
  if (candidates.size() == 1) return {"candidates", Result::good, "one terminal"};
  const std::string finding =
      std::to_string(candidates.size()) + " terminals; the one taken is " + candidates.front();
  const bool isMvx3 = isTerminal(candidates.front(), Select::mvx3);
  const bool canChoose = !terminals(list, isMvx3 ? Select::other : Select::mvx3).empty();
  return {"candidates", Result::warning, finding,
          canChoose ? std::string("mvx2 --reader ") + (isMvx3 ? "other" : "mvx3") + " status"
                    : "unplug the others"};
}

Check failedCheck(const std::string& name, const Problem& problem, const std::string& mend) {
  std::string finding = problem.message;
  if (problem.status && *problem.status != 0) finding += ": " + describeStatus(*problem.status);
  return {name, Result::bad, finding, mend, problem.exit};
}

// The connection, and the answer to the empty command.
void checkTerminal(const Tool& tool, std::vector<Check>& checks) {
  Session session(tool);
  try {
    session.open();
    checks.push_back({"connection", Result::good, "connected to " + session.reader()});
  } catch (const Failure& failure) {
    return checks.push_back(failedCheck("connection", failure.problem(),
                                        "switch the terminal on, then mvx2 --attempts 10 status"));
  }
  try {
    const Answer answer = session.exchange("");
    checks.push_back({"answer", Result::good, std::string("in ") + modeOf(answer.prompt) + " mode"});
  } catch (const Failure& failure) {
    checks.push_back(failedCheck("answer", failure.problem(),
                                 "mvx2 --attempts 10 status, after a restart of the terminal"));
  }
}

Check checkSam(const Tool& tool, const ReaderList& list) {
  if (sams(list).empty())
    return {"SAM", Result::warning, "no reader of a SAM is plugged in", "lsusb, if there should be one"};
  try {
    Sam sam(tool);
    return {"SAM", Result::good, "serial " + sam.serial() + " in " + sam.reader()};
  } catch (const Failure& failure) {
    return failedCheck("SAM", failure.problem(), "take the SAM out and put it back, then mvx2 sam status");
  }
}

// Each check is made only when those before it leave something to look at.
std::vector<Check> examineAll(const Tool& tool) {
  const ReaderList list = listReaders();
  std::vector<Check> checks = {checkDaemon(list)};
  if (checks.back().result == Result::bad) return checks;
  checks.push_back(checkPermissions(list));
  if (checks.back().result == Result::bad) return checks;
  checks.push_back(checkReaders(list, tool.reader));
  if (checks.back().result == Result::good) {
    checks.push_back(checkCandidates(list, tool.reader));
    checkTerminal(tool, checks);
  }
  checks.push_back(checkSam(tool, list));
  return checks;
}

}  // namespace

void examine(const Tool& tool) {
  const std::vector<Check> checks = examineAll(tool);
  Table table;
  Json list = Json::array();
  std::optional<Check> worst;
  for (const Check& check : checks) {
    table.add({check.name, Cell(nameOf(check.result), colourOf(check.result)), check.finding});
    if (!check.mend.empty()) table.add({"", "", "mend: " + check.mend});
    Json entry = {{"name", check.name}, {"result", nameOf(check.result)}, {"finding", check.finding}};
    if (!check.mend.empty()) entry["mend"] = check.mend;
    list.push_back(entry);
    if (check.result == Result::bad && !worst) worst = check;
  }
  tool.output.show({{"healthy", !worst}, {"checks", list}}, table);
  if (!worst) return;
  Problem problem;
  problem.exit = worst->exit;
  problem.message = "the check of " + worst->name + " failed";
  problem.operation = "doctor";
  throw Failure(std::move(problem));
}

}  // namespace mvx2tool
