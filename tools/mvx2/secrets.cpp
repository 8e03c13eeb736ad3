#include "secrets.h"

#include "errors.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace mvx2tool {

namespace {

constexpr std::size_t max_secret = 256;

// Read without a stream, whose buffer would keep a copy.
Secret readAll(int descriptor, const std::string& shownName) {
  std::array<char, max_secret + 1> buffer{};
  std::size_t length = 0;
  ssize_t got = 1;
  while (length < buffer.size() && got > 0) {
    got = read(descriptor, buffer.data() + length, buffer.size() - length);
    if (got > 0) length += static_cast<std::size_t>(got);
  }
  Secret secret(std::string(buffer.data(), length));
  explicit_bzero(buffer.data(), buffer.size());
  if (got < 0) failFile("cannot read the key from " + shownName + ": " + std::strerror(errno));
  if (length > max_secret) failFile("too long for a key: " + shownName);
  return secret;
}

bool isPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7F'; });
}

}  // namespace

void wipe(std::string& text) {
  text.resize(text.capacity());
  explicit_bzero(text.data(), text.size());
  text.clear();
}

Secret::Secret(Secret&& other) noexcept { m_text.swap(other.m_text); }

Secret readSecret(const std::string& file) {
  const bool isInput = file == "-";
  const std::string shownName = isInput ? "standard input" : file;
  const int descriptor = isInput ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) failFile("cannot read the key from " + shownName + ": " + std::strerror(errno));
  const Secret all = readAll(descriptor, shownName);
  if (!isInput) close(descriptor);

  const std::string& text = all.text();
  const char* const blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) failFile("no key in " + shownName);
  Secret key(text.substr(first, text.find_last_not_of(blanks) - first + 1));
  if (!isPrintable(key.text())) failFile("not one line with a key: " + shownName);
  return key;
}

}  // namespace mvx2tool
