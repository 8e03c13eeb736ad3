#include "lines.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace mvx2sim {

namespace {

constexpr std::size_t max_line = 512;

// A local address, or nothing (and errno set) for a path that does not fit into one.
std::optional<sockaddr_un> localAddress(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return std::nullopt;
  }
  path.copy(address.sun_path, path.size());
  return address;
}

const sockaddr* generic(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

class Socket {
 public:
  explicit Socket(int descriptor) : m_descriptor(descriptor) {}
  Socket(const Socket&) = delete;
  Socket(Socket&&) = delete;
  Socket& operator=(const Socket&) = delete;
  Socket& operator=(Socket&&) = delete;
  ~Socket() {
    const int error = errno;
    if (m_descriptor >= 0) close(m_descriptor);
    errno = error;
  }

  int get() const { return m_descriptor; }
  int release() { return std::exchange(m_descriptor, -1); }

  bool send(const std::string& line) const {
    return ::send(m_descriptor, line.data(), line.size(), MSG_NOSIGNAL) >= 0;
  }

  std::optional<std::string> receive() const {
    std::array<char, max_line> line{};
    const ssize_t length = recv(m_descriptor, line.data(), line.size(), 0);
    if (length <= 0) return std::nullopt;
    return std::string(line.data(), static_cast<std::size_t>(length));
  }

 private:
  int m_descriptor;
};

}  // namespace

int openLineSocket(const std::string& path) {
  const auto address = localAddress(path);
  if (!address) return -1;
  Socket listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  unlink(path.c_str());  // of a process that was killed
  if (bind(listener.get(), generic(*address), sizeof *address) != 0 || listen(listener.get(), 8) != 0)
    return -1;
  return listener.release();
}

void answerLine(int listener, const AnswerLine& answer) {
  const Socket connection(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
  const timeval patience{1, 0};
  setsockopt(connection.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  const auto line = connection.receive();
  // A client that has gone does not want the reply any more.
  if (line) connection.send(answer(*line));
}

std::optional<std::string> askLine(const std::string& path, const std::string& line) {
  const auto address = localAddress(path);
  if (!address) return std::nullopt;
  const Socket connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (connect(connection.get(), generic(*address), sizeof *address) != 0) return std::nullopt;
  if (!connection.send(line)) return std::nullopt;
  return connection.receive();
}

}  // namespace mvx2sim
