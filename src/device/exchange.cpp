#include "device/exchange.h"

#include "device/conversions.h"
#include "diag/text_buffer.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <iterator>
#include <utility>

namespace velmorin {
namespace {

// The exchange of a word alone.
auto line(const char* word) {
  return [word](Channel& channel) { return channel.mvx2Transaction(word); };
}

}  // namespace

std::string withText(const char* word, const char* text) {
  const std::string argument(text);
  return std::string(word) + ' ' + argument;
}

// What is done with the reply afterwards throws nothing.
MVX2Interfaces::Outcome MVX2Interfaces::attempt(const char* label, const Exchange& exchange,
                                                std::string& reply) {
  try {
    // Inside the handler: what the check throws is logged and replaced like any other failure.
    if (channelIsReady() == 0) return Outcome::notReady;
    reply = exchange(*m_channel);
    return Outcome::done;
  } catch (const std::exception& e) {
    m_log << label << e.what() << std::endl;
    // The caller only learns that the command failed; the reason is in the log.
    if (m_externalException) throw std::exception();
  }
  reconnect(0);
  return Outcome::failed;
}

long MVX2Interfaces::decimalReply(const char* label, const Exchange& exchange, long neutral) {
  std::string reply;
  return attempt(label, exchange, reply) == Outcome::done ? mvx2::decimal(reply) : neutral;
}

// The low bits of the number that T holds; for bool whether it is other than zero.
template <typename T>
T MVX2Interfaces::number(const char* word, const char* label, T neutral) {
  return static_cast<T>(decimalReply(label, line(word), neutral));
}

template <typename T>
T MVX2Interfaces::hexadecimal(const char* word, const char* label) {
  std::string reply;
  const Outcome outcome = attempt(label, line(word), reply);
  return static_cast<T>(outcome == Outcome::done ? mvx2::hexadecimal(reply) : std::uint32_t{0xFFFFFFFF});
}

// Once for each result type, not once in each of the methods: the library is for small boards.
template int MVX2Interfaces::number(const char* word, const char* label, int neutral);
template bool MVX2Interfaces::number(const char* word, const char* label, bool neutral);
template unsigned char MVX2Interfaces::number(const char* word, const char* label, unsigned char neutral);
template unsigned short MVX2Interfaces::number(const char* word, const char* label, unsigned short neutral);
template int MVX2Interfaces::hexadecimal(const char* word, const char* label);
template unsigned char MVX2Interfaces::hexadecimal(const char* word, const char* label);
template unsigned short MVX2Interfaces::hexadecimal(const char* word, const char* label);

int MVX2Interfaces::set(const char* word, std::int64_t value, const char* label) {
  // What an int cannot hold goes out negative.
  const auto exchange = [&](Channel& channel) {
    return channel.mvx2Transaction(word, static_cast<int>(value));
  };
  return static_cast<int>(decimalReply(label, exchange, not_done));
}

void MVX2Interfaces::send(const char* word, const char* label) {
  std::string notHandedBack;
  attempt(label, line(word), notHandedBack);
}

const char* MVX2Interfaces::replyText(const char* label, char (&response)[128], NotReady notReady,
                                      const Exchange& exchange) {
  std::string reply;
  const Outcome outcome = attempt(label, exchange, reply);
  if (outcome == Outcome::done)
    mvx2::assign(response, reply);
  else if (outcome == Outcome::failed || notReady == NotReady::saysSo)
    mvx2::assign(response, "No connected");
  return std::begin(response);
}

const char* MVX2Interfaces::text(const char* word, const char* label, char (&response)[128],
                                 NotReady notReady) {
  return replyText(label, response, notReady, line(word));
}

const char* MVX2Interfaces::setText(const char* word, const char* text, const char* label,
                                    char (&response)[128], NotReady notReady) {
  return replyText(label, response, notReady,
                   [&](Channel& channel) { return channel.mvx2Transaction(withText(word, text)); });
}

unsigned int* MVX2Interfaces::list(const char* word, const char* label, unsigned int (&response)[10]) {
  // First of all: a call that does not reach the terminal returns an empty list, not the last one.
  std::fill(std::begin(response), std::end(response), 0U);
  std::string reply;
  if (attempt(label, line(word), reply) == Outcome::done)
    mvx2::decimalLines(std::move(reply), std::begin(response), std::size(response));
  return std::begin(response);
}

bool MVX2Interfaces::showsPrompt(char prompt, const char* label) {
  std::string reply;
  const auto exchange = [](Channel& channel) { return channel.mvx2NoFormattedTransaction("\r"); };
  return attempt(label, exchange, reply) == Outcome::done && mvx2::lastLineStartsWith(reply, prompt);
}

}  // namespace velmorin
