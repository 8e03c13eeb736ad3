// Where a simulation keeps what it needs.
//
// All of it lies in a file system in memory that only the simulation's processes see, mounted where the
// daemon and its clients expect the daemon's socket: nothing is left when the last of them ends, however it
// ends.
#ifndef MVX2SIM_PLACES_H
#define MVX2SIM_PLACES_H

namespace mvx2sim::places {

constexpr const char* run = "/run";
constexpr const char* daemon_run = "/run/pcscd";  // compiled into the daemon and its client library
constexpr const char* home = "/run/pcscd/mvx2-sim";
constexpr const char* supervisor =
    "/run/pcscd/mvx2-sim/supervisor";                           // socket: stopping and starting the daemon
constexpr const char* plugged = "/run/pcscd/mvx2-sim/plugged";  // a file for each reader that is plugged in
constexpr const char* names = "/run/pcscd/mvx2-sim/names";      // a file for each reader with its name
constexpr const char* drivers = "/run/pcscd/mvx2-sim/drivers";  // a driver bundle for each reader
constexpr const char* usb = "/run/pcscd/mvx2-sim/usb.so";       // the daemon's USB bus
constexpr const char* configuration = "/run/pcscd/mvx2-sim/reader.conf";  // without readers
constexpr const char* log = "/run/pcscd/mvx2-sim/pcscd.log";

constexpr const char* daemon_drivers = "/usr/lib/pcsc/drivers";  // compiled into the daemon

}  // namespace mvx2sim::places

#endif
