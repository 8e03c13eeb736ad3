#include "ControlSocket.h"

#include <sys/eventfd.h>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cstdint>

namespace mvx2sim {

ControlSocket::ControlSocket(const std::string& path)
    : m_listener(openLineSocket(path)), m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

ControlSocket::~ControlSocket() {
  if (m_listener >= 0) close(m_listener);
  if (m_wake >= 0) close(m_wake);
}

void ControlSocket::wait(int milliseconds, const AnswerLine& answer) {
  std::array<pollfd, 2> ready{{{m_listener, POLLIN, 0}, {m_wake, POLLIN, 0}}};  // -1 is passed over
  if (poll(ready.data(), ready.size(), milliseconds) <= 0) return;
  eventfd_t count = 0;
  if (ready[1].revents != 0) eventfd_read(m_wake, &count);
  if (ready[0].revents != 0) answerLine(m_listener, answer);
}

void ControlSocket::wake() const { eventfd_write(m_wake, 1); }

}  // namespace mvx2sim
