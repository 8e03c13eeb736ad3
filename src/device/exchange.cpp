#include "device/exchange.h"

#include "device/conversions.h"

#include <algorithm>
#include <cstdint>

namespace velmorin {

std::string withText(const char* word, const char* text) {
  const std::string argument(text);
  return std::string(word) + ' ' + argument;
}

template <typename T>
T MVX2Interfaces::number(const char* word, const char* label, T neutral) {
  T result = neutral;
  attempt(label, [&](Channel& channel) { result = mvx2::decimal<T>(channel.mvx2Transaction(word)); });
  return result;
}

template <typename T>
T MVX2Interfaces::hexadecimal(const char* word, const char* label) {
  auto result = static_cast<T>(-1);
  attempt(label, [&](Channel& channel) {
    result = static_cast<T>(mvx2::hexadecimal(channel.mvx2Transaction(word)));
  });
  return result;
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
  int result = not_done;
  attempt(label, [&](Channel& channel) {
    // What an int cannot hold goes out negative.
    result = mvx2::decimal<int>(channel.mvx2Transaction(word, static_cast<int>(value)));
  });
  return result;
}

void MVX2Interfaces::send(const char* word, const char* label) {
  attempt(label, [&](Channel& channel) { channel.mvx2Transaction(word); });
}

const char* MVX2Interfaces::text(const char* word, const char* label, std::string& response,
                                 NotReady notReady) {
  return replyText(label, response, notReady,
                   [&](Channel& channel) { return channel.mvx2Transaction(word); });
}

const char* MVX2Interfaces::setText(const char* word, const char* text, const char* label,
                                    std::string& response, NotReady notReady) {
  return replyText(label, response, notReady,
                   [&](Channel& channel) { return channel.mvx2Transaction(withText(word, text)); });
}

unsigned int* MVX2Interfaces::list(const char* word, const char* label, unsigned int (&response)[10]) {
  // First of all: a call that does not reach the terminal returns an empty list, not the last one.
  std::fill(std::begin(response), std::end(response), 0U);
  attempt(label, [&](Channel& channel) {
    mvx2::decimalLines(channel.mvx2Transaction(word), std::begin(response), std::size(response));
  });
  return std::begin(response);
}

bool MVX2Interfaces::showsPrompt(char prompt, const char* label) {
  bool result = false;
  attempt(label, [&](Channel& channel) {
    result = mvx2::lastLineStartsWith(channel.mvx2NoFormattedTransaction("\r"), prompt);
  });
  return result;
}

}  // namespace velmorin
