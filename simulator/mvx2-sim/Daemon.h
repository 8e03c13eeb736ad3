// The private PC/SC daemon of a simulation.
#ifndef MVX2SIM_DAEMON_H
#define MVX2SIM_DAEMON_H

#include "Settings.h"

#include <sys/types.h>

namespace mvx2sim {

class Daemon {
 public:
  // Throws when there is no daemon on this machine, or nothing where drivers can be shown to it.
  explicit Daemon(Settings settings);
  Daemon(const Daemon&) = delete;
  Daemon(Daemon&&) = delete;
  Daemon& operator=(const Daemon&) = delete;
  Daemon& operator=(Daemon&&) = delete;
  ~Daemon() { stop(); }

  // Starts it and waits until every reader that is plugged in can be used. It ends with this process, however
  // this process ends. Nothing happens when it runs.
  void start();

  // Kills it and waits until it has gone.
  void stop();

  // Takes note of a child's end: whether it was the daemon.
  bool hasEnded(pid_t child);

 private:
  [[noreturn]] void execute() const;
  void waitUntilReady();

  Settings m_settings;
  const char* m_program;
  pid_t m_process = 0;
};

}  // namespace mvx2sim

#endif
