// Every command of the device facade: what a call of it sends, what a reply to it means, and what it does
// when there is no channel or something fails.
#ifndef MVX2_TESTS_COMMAND_TABLE_H
#define MVX2_TESTS_COMMAND_TABLE_H

#include <mvx2/MVX2Interfaces.h>

#include <functional>
#include <string>
#include <vector>

namespace mvx2test {

// What a call returned, in print: "12", "true", "3 7 0 0 0 0 0 0 0 0", a text as it stands, "nothing".
struct Result {
  std::string print;
  const char* text = nullptr;          // the text itself, if it is one
  const unsigned int* list = nullptr;  // the list itself, if it is one
};

using Call = std::function<Result(velmorin::MVX2Interfaces&)>;

struct Command {
  std::string method;
  Call call;
  unsigned char p1;            // of the APDU that carries the request: 00 a text, 01 a raw buffer
  std::string request;         // the data of that APDU
  std::string reply;           // what the reader answers, without its two status bytes
  std::string result;          // what the call makes of it
  std::string ofEmptyReply;    // what it makes of no answer at all
  std::string withoutChannel;  // what it returns without a channel, or `unchanged`
  std::string label;           // what a failure is logged under
  std::string neutral;         // what it returns after a failure that it swallowed
  Call withNullText;           // the same call with a null text, if it takes one
};

// Stands for what the method's buffer held before.
extern const std::string unchanged;

const std::vector<Command>& commands();

}  // namespace mvx2test

#endif
