// The door through which mvx2-sim talks to a reader of a running daemon.
#ifndef MVX2SIM_DRIVER_CONTROLSOCKET_H
#define MVX2SIM_DRIVER_CONTROLSOCKET_H

#include "../control/lines.h"

#include <string>
#include <thread>

namespace mvx2sim {

// A local socket that answers one line with one line, in a thread of its own: the daemon's thread for a
// reader is held up while an exchange with the reader lasts.
class ControlSocket {
 public:
  // An empty path makes a socket that nobody can reach.
  ControlSocket(const std::string& path, AnswerLine answer);
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket(ControlSocket&&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;
  ControlSocket& operator=(ControlSocket&&) = delete;
  ~ControlSocket();

  // Returns after wake(), after a line has been answered, or when the time is over.
  void wait(int milliseconds) const;

  void wake() const;

 private:
  void serve() const;

  AnswerLine m_answer;
  int m_listener = -1;
  int m_wake = -1;
  int m_stop = -1;
  std::thread m_thread;
};

}  // namespace mvx2sim

#endif
