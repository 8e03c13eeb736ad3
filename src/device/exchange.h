// How every command runs: one handler for all failures and, thin over it, one function per shape.
#ifndef MVX2_DEVICE_EXCHANGE_H
#define MVX2_DEVICE_EXCHANGE_H

#include <mvx2/Channel.h>
#include <mvx2/MVX2Interfaces.h>

#include <string>

namespace velmorin {

// The neutral value of setters and card actions.
constexpr int not_done = -999999;

// The request of a word with a text. A null text raises the standard library's logic error.
std::string withText(const char* word, const char* text);

// Refers to a function object that takes the channel, returns the reply and outlives this. As a template the
// handler of failures would be in the library once for each command.
class MVX2Interfaces::Exchange {
 public:
  template <typename Function>
  Exchange(const Function& function)  // NOLINT(google-explicit-constructor): stands for any function object
      : m_function(&function), m_call([](const void* object, Channel& channel) {
          return (*static_cast<const Function*>(object))(channel);
        }) {}

  std::string operator()(Channel& channel) const { return m_call(m_function, channel); }

 private:
  const void* m_function;
  std::string (*m_call)(const void* object, Channel& channel);
};

}  // namespace velmorin

#endif
