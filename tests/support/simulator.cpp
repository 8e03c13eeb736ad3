#include "support/simulator.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace mvx2test {

std::string sim(const std::string& command) {
  // NOLINTNEXTLINE(cert-env33-c): the command lines are the tests' own
  FILE* const output = popen((std::string(MVX2_SIM_COMMAND " ") + command + " 2>&1").c_str(), "r");
  if (output == nullptr) throw std::runtime_error("mvx2-sim cannot be started");
  std::string text;
  std::array<char, 256> piece;
  while (fgets(piece.data(), piece.size(), output) != nullptr) text += piece.data();
  if (!text.empty() && text.back() == '\n') text.pop_back();
  if (pclose(output) != 0) throw std::runtime_error("mvx2-sim " + command + ": " + text);
  return text;
}

}  // namespace mvx2test
