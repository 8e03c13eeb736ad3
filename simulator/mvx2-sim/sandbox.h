// The namespaces and files that keep a simulation to itself.
#ifndef MVX2SIM_SANDBOX_H
#define MVX2SIM_SANDBOX_H

#include "Settings.h"

namespace mvx2sim {

// Gives this process mounts of its own, as root directly and otherwise through a user namespace in which the
// user keeps his number, and mounts the simulation's file system. What runs on the machine does not notice.
void enterSandbox();

// Writes the files that the daemon reads: a bundle for each reader, the bus, the configuration.
void furnish(const Settings& settings);

// Shows the calling process the simulation's drivers and no others.
void mountDrivers();

}  // namespace mvx2sim

#endif
