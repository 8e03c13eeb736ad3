// The connection of one run to the terminal. An exchange through it either gives what the terminal said or
// fails: what failed never looks like a value.
#ifndef MVX2TOOL_SESSION_H
#define MVX2TOOL_SESSION_H

#include "readers.h"
#include "secrets.h"
#include "tool.h"
#include "values.h"

#include <mvx2/MVX2Interfaces.h>

#include <string>

namespace mvx2tool {

// The prompts are those of the terminal's modes.
constexpr char command_prompt = '>';
constexpr char boot_prompt = '#';
constexpr char online_prompt = '$';

// "command", "boot loader" or "on-line".
const char* modeOf(char prompt);

// Fails with Exit::usage for what cannot go to the terminal in one exchange.
void checkRequest(const std::string& bytes, const std::string& operation);

struct Answer {
  std::string text = {};
  char prompt = command_prompt;
};

class Session {
 public:
  explicit Session(const Tool& tool);
  Session(const Session&) = delete;
  Session(Session&&) = delete;
  Session& operator=(const Session&) = delete;
  Session& operator=(Session&&) = delete;
  ~Session() { m_facade->releaseInstance(); }

  // Connects in as many attempts as the user asked for.
  void open();
  // One attempt, which takes a second if it fails.
  bool tryToOpen();

  // The name of the reader that the library takes, empty when it has gone.
  std::string reader() const;

  // Sends a line and takes what the terminal says. Errors name its first word alone: a key may follow it.
  Answer exchange(const std::string& line);
  // The same when line and answer hold a secret.
  Secret exchangeSecret(const Secret& line);
  // Sends bytes as they are. An answer without prompt is taken as well.
  std::string exchangeRaw(const std::string& bytes);

  Reading read(const Value& value);
  // Writes, reads back and returns what the terminal answered to the write; fails unless it kept the value.
  std::string write(const Value& value, std::int64_t number);
  Secret readKey(const std::string& name);
  void writeKey(const std::string& name, const Secret& key);

 private:
  std::string send(const std::string& bytes, const std::string& operation);
  [[noreturn]] void failNoAnswer(const std::string& operation);

  const Tool& m_tool;
  velmorin::MVX2Interfaces* m_facade;
};

// The terminal answered, but not with what the operation gives.
[[noreturn]] void failRefused(const std::string& operation, const std::string& reply,
                              const std::string& message = {}, const std::string& hint = {});

}  // namespace mvx2tool

#endif
