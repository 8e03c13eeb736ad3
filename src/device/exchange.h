// How every command runs: one handler for all failures and, thin over it, one function per shape.
#ifndef MVX2_DEVICE_EXCHANGE_H
#define MVX2_DEVICE_EXCHANGE_H

#include <mvx2/Channel.h>
#include <mvx2/MVX2Interfaces.h>

#include <exception>
#include <string>

namespace velmorin {

// The neutral value of setters and card actions.
constexpr int not_done = -999999;

// The request of a word with a text. A null text raises the standard library's logic error.
std::string withText(const char* word, const char* text);

// Runs exchange(channel) if the channel is ready. The readiness check is inside the handler: what it throws
// is logged and replaced like any other failure.
template <typename Exchange>
MVX2Interfaces::Outcome MVX2Interfaces::attempt(const char* label, Exchange exchange) {
  try {
    if (channelIsReady() == 0) return Outcome::notReady;
    exchange(*m_channel);
    return Outcome::done;
  } catch (const std::exception& e) {
    m_log << label << e.what() << std::endl;
    // The caller only learns that the command failed; the reason is in the log.
    if (m_externalException) throw std::exception();
  }
  reconnect(0);
  return Outcome::failed;
}

// A text method: exchange(channel) gives the reply.
template <typename Exchange>
const char* MVX2Interfaces::replyText(const char* label, std::string& response, NotReady notReady,
                                      Exchange exchange) {
  const Outcome outcome = attempt(label, [&](Channel& channel) {
    const std::string reply = exchange(channel);
    // Copied, not moved: the buffer keeps its room of 128 characters, and no assignment to it can fail.
    response = reply;
  });
  const bool saysSo = outcome == Outcome::notReady && notReady == NotReady::saysSo;
  if (saysSo || outcome == Outcome::failed) response = "No connected";
  return response.c_str();
}

}  // namespace velmorin

#endif
