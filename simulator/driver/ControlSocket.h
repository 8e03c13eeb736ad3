// The door through which mvx2-sim talks to a reader of a running daemon.
#ifndef MVX2SIM_DRIVER_CONTROLSOCKET_H
#define MVX2SIM_DRIVER_CONTROLSOCKET_H

#include "../control/lines.h"

#include <string>

namespace mvx2sim {

// A local socket that answers one line with one line, and a wait that it or wake() ends.
class ControlSocket {
 public:
  // An empty path makes a socket that nobody can reach.
  explicit ControlSocket(const std::string& path);
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket(ControlSocket&&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;
  ControlSocket& operator=(ControlSocket&&) = delete;
  ~ControlSocket();

  // Returns after wake(), after one line has been answered, or when the time is over.
  void wait(int milliseconds, const AnswerLine& answer);

  void wake() const;

 private:
  int m_listener = -1;
  int m_wake = -1;
};

}  // namespace mvx2sim

#endif
