// A reason for mvx2-sim to end, with its own exit status.
#ifndef MVX2SIM_FAILURE_H
#define MVX2SIM_FAILURE_H

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace mvx2sim {

// As env(1) and its like: mvx2-sim itself failed; the command cannot be executed; there is no such command.
constexpr int exit_failure = 125;
constexpr int exit_not_executable = 126;
constexpr int exit_not_found = 127;

class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& reason) : std::runtime_error(reason) {}
};

// The failure of a system call, with the reason that errno holds.
inline Failure systemFailure(const std::string& what) {
  return Failure(what + ": " + std::generic_category().message(errno));
}

}  // namespace mvx2sim

#endif
