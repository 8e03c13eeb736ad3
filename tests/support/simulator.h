// The simulator beside which an end-to-end test runs.
#ifndef MVX2_TESTS_SIMULATOR_H
#define MVX2_TESTS_SIMULATOR_H

#include <string>

namespace mvx2test {

// Gives mvx2-sim a command, for example "fault transmit 1" or "get credit", and returns what it prints
// without the final line feed. Throws std::runtime_error with that text if it fails.
std::string sim(const std::string& command);

}  // namespace mvx2test

#endif
