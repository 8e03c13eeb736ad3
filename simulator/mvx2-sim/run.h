// `mvx2-sim run`: a command beside a private daemon.
#ifndef MVX2SIM_RUN_H
#define MVX2SIM_RUN_H

#include "Settings.h"

namespace mvx2sim {

// Runs the command and returns its exit status, 128 and the signal's number when a signal ended it. The
// daemon has ended when this returns.
int run(const Settings& settings);

}  // namespace mvx2sim

#endif
