// What `mvx2-sim run` is asked for.
#ifndef MVX2SIM_SETTINGS_H
#define MVX2SIM_SETTINGS_H

#include <string>
#include <vector>

namespace mvx2sim {

struct Settings {
  bool terminal = true;
  bool sam = true;
  bool verbose = false;
  std::string terminalName = "KRV MVX3 Terminal";
  std::string samName = "ACS SAM";
  std::string samKey = "000102030405060708090A0B0C0D0E0F";
  std::string samSerial = "04112233445566";
  std::vector<std::string> command;
};

}  // namespace mvx2sim

#endif
