#include "errors.h"

#include <utility>

namespace mvx2tool {

const char* nameOf(Exit exit) {
  switch (exit) {
    case Exit::done:
      return "done";
    case Exit::usage:
      return "usage";
    case Exit::noReader:
      return "no-reader";
    case Exit::noAnswer:
      return "no-answer";
    case Exit::refused:
      return "refused";
    case Exit::samFailed:
      return "sam-failed";
    case Exit::file:
      return "file";
    case Exit::interrupted:
      return "interrupted";
  }
  return "";
}

void failUsage(const std::string& message, const std::string& hint) {
  Problem problem;
  problem.exit = Exit::usage;
  problem.message = message;
  problem.hint = hint;
  throw Failure(std::move(problem));
}

void failFile(const std::string& message, const std::string& hint) {
  Problem problem;
  problem.exit = Exit::file;
  problem.message = message;
  problem.hint = hint;
  throw Failure(std::move(problem));
}

}  // namespace mvx2tool
