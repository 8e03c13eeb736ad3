// The simulated readers as a client of the private daemon sees them. A device is "terminal" or "sam".
#ifndef MVX2SIM_READERS_H
#define MVX2SIM_READERS_H

#include <string>
#include <vector>

namespace mvx2sim {

// The devices of this simulation, whether plugged in or not.
std::vector<std::string> devices();

// The name under which the daemon lists a device's reader.
std::string readerName(const std::string& device);

bool isPlugged(const std::string& device);

// Whether the daemon answers and lists exactly the readers that are plugged in, each with its card ready or
// out.
bool allPluggedReadersReady();

// Plugs a reader in or pulls it out and waits until the daemon has followed, when one runs.
void plug(const std::string& device, bool in);

// Waits until the daemon knows that the card of a reader is in or out.
void awaitCard(const std::string& device, bool in);

}  // namespace mvx2sim

#endif
