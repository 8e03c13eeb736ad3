// Exchanges whose text or bytes are the caller's.
#include "device/exchange.h"

#include <algorithm>
#include <iterator>

namespace velmorin {

const char* MVX2Interfaces::transaction(const char* text) {
  static char response[128];
  return replyText("transaction : ", response, NotReady::saysSo,
                   [&](Channel& channel) { return channel.mvx2Transaction(text); });
}

const char* MVX2Interfaces::noFormatedTransaction(const char* text) {
  static char response[128];
  return replyText("noFormatedTransaction : ", response, NotReady::saysSo,
                   [&](Channel& channel) { return channel.mvx2NoFormattedTransaction(text); });
}

const char* MVX2Interfaces::sendAPDU(const char* apdu, unsigned char length) {
  static char response[128];
  std::fill(std::begin(response), std::end(response), '\0');
  return replyText("value : ", response, NotReady::keepsText,
                   [&](Channel& channel) { return channel.mvx2APDUTransaction(apdu, length); });
}

}  // namespace velmorin
