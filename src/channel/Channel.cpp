#include <mvx2/Channel.h>

#include "diag/digits.h"

#include <cstring>

namespace {

constexpr char carriage_return = '\r';
constexpr char line_feed = '\n';

// The terminal echoes the command line before it answers. Index 0 is never taken for the end of the echo.
unsigned int answerStart(const unsigned char* data, unsigned int length) {
  if (length < 2) return 2;
  const void* const feed = std::memchr(data + 1, line_feed, length - 1);
  if (feed == nullptr) return length;
  return static_cast<unsigned int>(static_cast<const unsigned char*>(feed) - data) + 1;
}

bool isPrompt(unsigned char byte) { return byte == '#' || byte == '>' || byte == '$'; }

}  // namespace

Channel::Channel() = default;

Channel::~Channel() = default;

std::string Channel::formatMessage(const std::string& command) {
  if (command.find(carriage_return) != std::string::npos) return command;
  std::string request;
  request.reserve(command.size() + 1);
  request += command;
  request += carriage_return;
  return request;
}

std::string Channel::formatResponse(const unsigned char* data, unsigned int length) {
  std::string answer;
  for (unsigned int i = answerStart(data, length); i < length && !isPrompt(data[i]); ++i) {
    if (data[i] != carriage_return) answer += static_cast<char>(data[i]);
  }
  const std::size_t last = answer.rfind(line_feed);
  if (last != std::string::npos) answer.erase(last, 1);
  return answer;
}

std::string Channel::mvx2Transaction(const std::string& command) {
  const std::string request = formatMessage(command);
  const std::string raw = mvx2NoFormattedTransaction(request);
  return formatResponse(reinterpret_cast<const unsigned char*>(raw.data()),
                        static_cast<unsigned int>(raw.size()));
}

std::string Channel::mvx2Transaction(const std::string& command, int argument) {
  return mvx2Transaction(command + ' ' + mvx2::decimalDigits(argument) + carriage_return);
}

const char* Channel::name() const noexcept { return m_name.c_str(); }
