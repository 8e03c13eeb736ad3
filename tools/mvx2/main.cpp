// mvx2: a command-line tool for technicians, integrators and scripts, on the library's public headers alone.
#include "grammar.h"
#include "interrupt.h"

#include <mvx2/NullStream.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace {

using mvx2tool::Exit;
using mvx2tool::Failure;
using mvx2tool::Grammar;
using mvx2tool::Output;
using mvx2tool::Problem;
using mvx2tool::Tool;

// The library logs into a file buffer of its own. When standard error is a file, both have to append: each
// would else write over what the other wrote.
void showLibraryLog() {
  fcntl(STDERR_FILENO, F_SETFL, fcntl(STDERR_FILENO, F_GETFL) | O_APPEND);
  null_stream.close();
  null_stream.open("/dev/stderr", std::ios_base::out | std::ios_base::app);
}

int fail(const Output& output, const Problem& problem) {
  output.report(problem);
  return static_cast<int>(problem.exit);
}

Problem usageProblem(const std::string& complaint) {
  Problem problem;
  problem.exit = Exit::usage;
  problem.message = complaint;
  problem.hint = "mvx2 --help, or --help behind a command";
  return problem;
}

int run(Tool& tool, int argc, char** argv) {
  Grammar grammar(tool);
  try {
    grammar.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (grammar.showHelp(error)) return 0;
    // The line was not taken over: whether JSON is wanted is read from it.
    tool.output.json = std::find(argv + 1, argv + argc, std::string("--json")) != argv + argc;
    return fail(tool.output, usageProblem(grammar.complaint(error)));
  }
  if (grammar.isVerbose()) showLibraryLog();
  grammar.run();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  mvx2tool::interrupt::exitAtOnce();
  Tool tool;
  try {
    return run(tool, argc, argv);
  } catch (const Failure& failure) {
    return fail(tool.output, failure.problem());
  } catch (const std::exception& error) {
    Problem problem;
    problem.exit = Exit::noAnswer;
    problem.message = std::string("unexpected: ") + error.what();
    return fail(tool.output, problem);
  }
}
