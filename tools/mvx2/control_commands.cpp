#include "commands.h"
#include "pcsc_names.h"
#include "session.h"
#include "text.h"

#include <mvx2/USBChannel.h>

namespace mvx2tool {

namespace {

constexpr std::size_t max_apdu = 64;

void confirm(const Tool& tool, const Json& fields, const std::string& text) {
  tool.output.show(fields, tool.output.quiet ? "" : text + '\n');
}

// The card's reply without the status bytes that the reader adds.
std::string exchangeApdu(const Tool& tool, const std::string& apdu) try {
  // The facade ends a reply at its first byte 00; the channel below it does not.
  USBChannel channel(static_cast<int>(tool.reader));
  std::string reply = channel.mvx2APDUTransaction(apdu.data(), static_cast<int>(apdu.size()));
  const std::string readerIsDone("\x90\x00", 2);
  const bool isDone = reply.size() >= 2 && reply.compare(reply.size() - 2, 2, readerIsDone) == 0;
  if (isDone) reply.resize(reply.size() - 2);
  return reply;
} catch (const std::exception&) {
  // The channel is closed and what it raised says less than a look of its own.
  throw Failure(diagnose("apdu", tool.reader));
}

}  // namespace

void beep(const Tool& tool, std::uint32_t duration) {
  Session session(tool);
  session.open();
  const std::string line = duration == 0 ? "beep" : "beep " + std::to_string(duration);
  const std::string answer = session.exchange(line).text;
  if (!answer.empty()) failRefused("beep", answer);
  confirm(tool, {{"duration", duration}}, "beep is done");
}

void changeMode(const Tool& tool, const std::string& word, char prompt) {
  Session session(tool);
  session.open();
  const Answer answer = session.exchange(word);
  if (answer.prompt != prompt)
    failRefused(word, answer.text,
                std::string("the terminal stays in its ") + modeOf(answer.prompt) + " mode");
  confirm(tool, {{"mode", modeOf(prompt)}},
          std::string("the terminal is in its ") + modeOf(prompt) + " mode");
}

void reboot(const Tool& tool) {
  Session session(tool);
  session.open();
  const Answer answer = session.exchange("reboot");
  if (!answer.text.empty()) failRefused("reboot", answer.text);
  confirm(tool, {{"mode", modeOf(answer.prompt)}},
          "the terminal restarts; mvx2 --attempts 10 status waits for it");
}

void sendText(const Tool& tool, const Arguments& arguments) {
  const auto bytes = arguments.raw ? unescaped(arguments.value) : arguments.value;
  if (!bytes) failUsage(R"(not an escape of this text: use \r \n \t \\ or \xNN)");
  if (!arguments.raw && bytes->find('\r') != std::string::npos)
    failUsage("one line only: the carriage return is added", "send --raw takes the text as it is");
  checkRequest(arguments.raw ? *bytes : *bytes + '\r', "send");
  Session session(tool);
  session.open();
  if (arguments.raw) {
    const std::string reply = session.exchangeRaw(*bytes);
    tool.output.show({{"reply", printable(reply)}, {"hex", hexBytes(reply)}}, printable(reply) + '\n');
    return;
  }
  const Answer answer = session.exchange(*bytes);
  std::string text;
  Json replies = Json::array();
  for (const std::string& line : lines(answer.text)) {
    text += printable(line) + '\n';
    replies.push_back(printable(line));
  }
  tool.output.show({{"lines", replies}, {"mode", modeOf(answer.prompt)}}, text);
}

void sendApdu(const Tool& tool, const std::string& hexadecimal) {
  const auto apdu = parseHexBytes(hexadecimal);
  if (!apdu || apdu->empty()) failUsage("not bytes in hexadecimal: " + printable(hexadecimal));
  if (apdu->size() > max_apdu)
    failUsage("an APDU holds at most 64 bytes; this one is " + std::to_string(apdu->size()));
  Session(tool).open();
  const std::string reply = exchangeApdu(tool, *apdu);
  if (reply.size() < 2) failRefused("apdu", reply, "the terminal's reply holds no status word");
  const auto byte = [&reply](std::size_t fromEnd) {
    return static_cast<unsigned>(static_cast<unsigned char>(reply[reply.size() - fromEnd]));
  };
  const Explanation word = explainStatusWord(byte(2) * 0x100U + byte(1));
  const std::string data = hexBytes(reply.substr(0, reply.size() - 2));
  tool.output.show({{"data", data}, {"sw", word.code}, {"name", word.name}},
                   (data.empty() ? "" : data + "  ") + word.code + " (" + word.name + ")\n");
}

}  // namespace mvx2tool
