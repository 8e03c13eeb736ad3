#include "session.h"

#include "text.h"

#include <mvx2/Channel.h>

#include <strings.h>

#include <cstring>

namespace mvx2tool {

namespace {

constexpr std::size_t max_request = 64;

// The library's way to cut the answer out of a reply.
class Framing : public Channel {
 public:
  std::string mvx2NoFormattedTransaction(const std::string& /*request*/) override { return {}; }
  std::string mvx2APDUTransaction(const char* /*data*/, int /*length*/) override { return {}; }
};

std::string answerIn(const std::string& reply) {
  return Framing().formatResponse(reinterpret_cast<const unsigned char*>(reply.data()),
                                  static_cast<unsigned int>(reply.size()));
}

// The prompt that starts the last line of a complete reply, or 0.
char promptIn(const std::string& reply) {
  const std::size_t feed = reply.rfind('\n');
  if (feed == std::string::npos || feed + 1 >= reply.size()) return 0;
  const char prompt = reply[feed + 1];
  return prompt == command_prompt || prompt == boot_prompt || prompt == online_prompt ? prompt : '\0';
}

std::string firstWord(const std::string& line) {
  const std::string word = line.substr(0, line.find(' '));
  return word.empty() ? "the empty command" : word;
}

}  // namespace

const char* modeOf(char prompt) {
  return prompt == boot_prompt ? "boot loader" : prompt == online_prompt ? "on-line" : "command";
}

void checkRequest(const std::string& bytes, const std::string& operation) {
  if (bytes.size() > max_request)
    failUsage("too long for one exchange: " + operation,
              "a line with its carriage return holds 64 bytes; this one is " + std::to_string(bytes.size()));
  if (bytes.find('\0') != std::string::npos) failUsage("a byte 00 cannot be sent: " + operation);
}

void failRefused(const std::string& operation, const std::string& reply, const std::string& message,
                 const std::string& hint) {
  Problem problem;
  problem.exit = Exit::refused;
  problem.operation = operation;
  problem.reply = reply;
  problem.message = message.empty() ? "the terminal refused " + operation : message;
  problem.hint = hint;
  throw Failure(std::move(problem));
}

// A refusal without a text of the terminal's: it has accepted what it was told, and holds something else.
[[noreturn]] void failNotKept(const std::string& name, const std::string& detail) {
  Problem problem;
  problem.exit = Exit::refused;
  problem.operation = name;
  problem.message = "the terminal did not keep " + name + detail;
  throw Failure(std::move(problem));
}

Session::Session(const Tool& tool)
    : m_tool(tool), m_facade(velmorin::MVX2Interfaces::getInstance(static_cast<int>(tool.reader))) {}

bool Session::tryToOpen() { return m_facade->connect(1, velmorin::CONNECT_DEFAULT); }

void Session::open() {
  for (int attempt = 1; attempt <= m_tool.attempts; ++attempt) {
    if (m_tool.attempts > 1)
      m_tool.output.notice({{"event", "attempt"}, {"attempt", attempt}, {"of", m_tool.attempts}},
                           "Attempt " + std::to_string(attempt) + " of " + std::to_string(m_tool.attempts));
    if (tryToOpen()) return;
  }
  Problem problem = diagnose("connect", m_tool.reader);
  // Between the last attempt and the diagnosis the terminal may have come.
  if (problem.exit == Exit::noAnswer && problem.status == 0U)
    problem.message = "the terminal could not be connected";
  throw Failure(std::move(problem));
}

std::string Session::reader() const {
  const std::vector<std::string> fitting = terminals(listReaders(), m_tool.reader);
  return fitting.empty() ? "" : fitting.front();
}

void Session::failNoAnswer(const std::string& operation) {
  // The failed exchange has left a transaction open, which would keep the diagnosis waiting.
  m_facade->disconnect();
  throw Failure(diagnose(operation, m_tool.reader));
}

std::string Session::send(const std::string& bytes, const std::string& operation) {
  checkRequest(bytes, operation);
  std::string reply = m_facade->noFormatedTransaction(bytes.c_str());
  if (reply.empty() || reply == "No connected") failNoAnswer(operation);
  return reply;
}

Answer Session::exchange(const std::string& line) {
  const std::string operation = firstWord(line);
  const std::string reply = send(line + '\r', operation);
  const char prompt = promptIn(reply);
  if (prompt == 0) failNoAnswer(operation);
  return {answerIn(reply), prompt};
}

Secret Session::exchangeSecret(const Secret& line) {
  const std::string operation = firstWord(line.text());
  std::string request;
  request.reserve(max_request + 1);
  request.append(line.text()).append(1, '\r');
  const Secret sent(std::move(request));
  if (sent.text().size() > max_request) failUsage("the key is too long for one exchange: " + operation);
  const char* const buffer = m_facade->noFormatedTransaction(sent.text().c_str());
  const Secret reply{std::string(buffer)};
  // The library keeps its reply until the next one; it lies in a buffer that is not constant.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): see above
  explicit_bzero(const_cast<char*>(buffer), std::strlen(buffer));
  if (promptIn(reply.text()) == 0) failNoAnswer(operation);
  return Secret(answerIn(reply.text()));
}

std::string Session::exchangeRaw(const std::string& bytes) { return send(bytes, "send --raw"); }

Reading Session::read(const Value& value) {
  const Answer answer = exchange(value.name);
  const auto reading = parseReading(value, answer.text);
  if (!reading) {
    const bool isCommandMode = answer.prompt == command_prompt;
    failRefused(
        value.name, answer.text, {},
        isCommandMode ? "" : std::string("it is in its ") + modeOf(answer.prompt) + " mode: mvx2 quit");
  }
  return *reading;
}

std::string Session::write(const Value& value, std::int64_t number) {
  const std::string sent = wireText(value, number);
  std::string answer = exchange(std::string(value.name) + ' ' + sent).text;
  // The terminal answers a write with a number, in decimal or as it prints the value.
  if (!parseDecimal(trimmed(answer)) && !parseReading(value, answer)) failRefused(value.name, answer);
  const Reading kept = read(value);
  if (kept != Reading{number})
    failNotKept(value.name, ": it answered \"" + printable(answer) + "\" and holds " + print(value, kept));
  return answer;
}

Secret Session::readKey(const std::string& name) {
  Secret key = exchangeSecret(Secret(std::string(name)));
  if (!isKeyText(key.text())) failRefused(name, key.text());
  return key;
}

void Session::writeKey(const std::string& name, const Secret& key) {
  std::string line;
  line.reserve(max_request + 1);
  line.append(name).append(1, ' ').append(key.text());
  const Secret answer = exchangeSecret(Secret(std::move(line)));
  const auto isTheKey = [&key](const Secret& text) {
    return strcasecmp(text.text().c_str(), key.text().c_str()) == 0;
  };
  // An answer that holds the key is never shown.
  const bool isWord = answer.text().find(key.text()) == std::string::npos && !isKeyText(answer.text());
  if (isWord && !parseDecimal(answer.text())) failRefused(name, answer.text());
  if (!isTheKey(readKey(name))) failNotKept(name, "");
}

}  // namespace mvx2tool
