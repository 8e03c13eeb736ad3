#include "ControlSocket.h"

#include <sys/eventfd.h>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace mvx2sim {

ControlSocket::ControlSocket(const std::string& path, AnswerLine answer)
    : m_answer(std::move(answer)),
      m_listener(openLineSocket(path)),
      m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_stop(eventfd(0, EFD_CLOEXEC)) {
  if (m_listener >= 0) m_thread = std::thread(&ControlSocket::serve, this);
}

ControlSocket::~ControlSocket() {
  eventfd_write(m_stop, 1);
  if (m_thread.joinable()) m_thread.join();
  for (const int descriptor : {m_listener, m_wake, m_stop}) {
    if (descriptor >= 0) close(descriptor);
  }
}

void ControlSocket::serve() const {
  std::array<pollfd, 2> ready{{{m_listener, POLLIN, 0}, {m_stop, POLLIN, 0}}};
  for (;;) {
    const int count = poll(ready.data(), ready.size(), -1);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 || ready[1].revents != 0) return;
    answerLine(m_listener, m_answer);
    wake();
  }
}

void ControlSocket::wait(int milliseconds) const {
  pollfd woken{m_wake, POLLIN, 0};
  eventfd_t count = 0;
  if (poll(&woken, 1, milliseconds) > 0) eventfd_read(m_wake, &count);
}

void ControlSocket::wake() const { eventfd_write(m_wake, 1); }

}  // namespace mvx2sim
