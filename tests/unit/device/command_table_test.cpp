// What holds for every row of the command table.
#include "unit/device/command_table.h"
#include "support/log_capture.h"
#include "unit/device/facade_fixture.h"

#include <gtest/gtest.h>

#include <locale>
#include <map>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace mvx2test {
namespace {

using velmorin::MVX2Interfaces;

class EveryCommand : public ConnectedFacade {
 protected:
  Result callAnswered(const Command& command) {
    pcsc.answer(command.reply);
    return command.call(*facade);
  }
};

// The type of what a call throws, "nothing" if it returns.
std::string thrownBy(const Call& call, MVX2Interfaces& facade) {
  try {
    call(facade);
    return "nothing";
  } catch (const std::exception& e) {
    return typeid(e).name();
  }
}

const std::string plain_exception = typeid(std::exception).name();

// The two APDUs of one exchange.
std::vector<Bytes> exchangeOf(const Command& command) {
  Bytes carrier = {0xFF, 0x00, command.p1, 0x00, static_cast<unsigned char>(command.request.size())};
  const Bytes data = bytesOf(command.request);
  carrier.insert(carrier.end(), data.begin(), data.end());
  return {carrier, {0xFF, 0xC0, 0x00, 0x00, static_cast<unsigned char>(command.reply.size())}};
}

TEST_F(EveryCommand, SendsExactlyItsRequest) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    pcsc.apdus.clear();
    callAnswered(command);
    EXPECT_EQ(pcsc.apdus, exchangeOf(command));
  }
}

TEST_F(EveryCommand, MakesItsResultOfTheReply) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    EXPECT_EQ(callAnswered(command).print, command.result);
  }
}

TEST_F(EveryCommand, ConvertsAnEmptyReplyLikeAnyOther) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    pcsc.replies.clear();
    EXPECT_EQ(command.call(*facade).print, command.ofEmptyReply);
  }
}

TEST_F(EveryCommand, LogsNothingWhenItSucceeds) {
  const LogCapture log;
  for (const Command& command : commands()) callAnswered(command);
  EXPECT_EQ(log.text(), "");
}

// Grouping and a hexadecimal look of their own: what a stream would do with a number in such a locale.
struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

TEST_F(EveryCommand, SendsTheSameInEveryLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    pcsc.apdus.clear();
    callAnswered(command);
    EXPECT_EQ(pcsc.apdus, exchangeOf(command));
  }
  std::locale::global(before);
}

// ---- without a channel

TEST_F(EveryCommand, ReturnsItsValueWithoutAChannel) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    connect();
    const std::string last = callAnswered(command).print;
    facade->disconnect();
    EXPECT_EQ(command.call(*facade).print,
              command.withoutChannel == unchanged ? last : command.withoutChannel);
  }
}

TEST_F(EveryCommand, NeitherCallsPcscNorLogsWithoutAChannel) {
  facade->disconnect();
  pcsc.calls.clear();
  const LogCapture log;
  for (const Command& command : commands()) command.call(*facade);
  EXPECT_EQ(pcsc.calls, std::vector<std::string>());
  EXPECT_EQ(log.text(), "");
}

TEST_F(EveryCommand, ThrowsAPlainExceptionWithoutAChannelIfExternalExceptionsAreOn) {
  facade->disconnect();
  facade->enableExternalException(true);
  for (const Command& command : commands())
    EXPECT_EQ(thrownBy(command.call, *facade), plain_exception) << command.method;
}

TEST_F(EveryCommand, LogsTheMissingChannelUnderItsLabelIfExternalExceptionsAreOn) {
  facade->disconnect();
  facade->enableExternalException(true);
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    const LogCapture log;
    thrownBy(command.call, *facade);
    EXPECT_EQ(log.text(), command.label + "null Pointer (0x0) [channelIsReady:MVX2Interfaces:118]\n");
  }
}

// ---- after a failure

TEST_F(EveryCommand, ReturnsItsNeutralValueAfterAFailure) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    callAnswered(command);
    breakChannel();
    EXPECT_EQ(command.call(*facade).print, command.neutral);
  }
}

TEST_F(EveryCommand, LogsAFailureUnderItsLabelBeforeItReconnects) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    breakChannel();
    const LogCapture log;
    command.call(*facade);
    const std::vector<std::string> lines = log.lines();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], command.label + "no luck");
    EXPECT_EQ(lines[1].substr(0, 30), "MVX2Interfaces disconnexion at");
    EXPECT_EQ(lines[3].substr(0, 16), "USB connexion at");
  }
}

TEST_F(EveryCommand, ReconnectsAfterAFailure) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    breakChannel();
    command.call(*facade);
    EXPECT_TRUE(hasNewChannel());
  }
}

TEST_F(EveryCommand, TriesOnceToReconnect) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    breakChannel();
    pcsc.fail("SCardEstablishContext", static_cast<LONG>(SCARD_E_NO_SERVICE));
    EXPECT_EQ(command.call(*facade).print, command.neutral);
    EXPECT_EQ(pcsc.calls, (std::vector<std::string>{"SCardEstablishContext(scope 2)", "sleep(1)"}));
  }
}

TEST_F(EveryCommand, DoesNotRepeatItsRequestAfterAFailure) {
  for (const Command& command : commands()) {
    breakChannel();
    pcsc.apdus.clear();
    command.call(*facade);
    EXPECT_EQ(pcsc.requests(), std::vector<std::string>{"\r"}) << command.method;
  }
}

TEST_F(EveryCommand, ThrowsAPlainExceptionAfterAFailureIfExternalExceptionsAreOn) {
  facade->enableExternalException(true);
  for (const Command& command : commands()) {
    breakChannel();
    EXPECT_EQ(thrownBy(command.call, *facade), plain_exception) << command.method;
  }
}

TEST_F(EveryCommand, LogsAFailureAndDoesNotReconnectIfExternalExceptionsAreOn) {
  facade->enableExternalException(true);
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.method);
    breakChannel();
    const LogCapture log;
    thrownBy(command.call, *facade);
    EXPECT_EQ(log.text(), command.label + "no luck\n");
    EXPECT_EQ(pcsc.calls, std::vector<std::string>());
  }
}

TEST_F(EveryCommand, LetsAnExceptionOfTheReconnectionThrough) {
  struct NoException {};
  for (const Command& command : commands()) {
    connect();
    breakChannel();
    pcsc.onTransmit = [] { throw NoException(); };
    EXPECT_THROW(command.call(*facade), NoException) << command.method;
    pcsc.onTransmit = nullptr;
  }
}

// ---- null texts

// What the standard library says about a string made of a null pointer.
std::string nullTextMessage() {
  const char* volatile null = nullptr;
  try {
    const std::string text(null);
    return "nothing, but makes \"" + text + "\"";
  } catch (const std::logic_error& e) {
    return e.what();
  }
}

TEST_F(EveryCommand, TreatsANullTextAsAFailure) {
  for (const Command& command : commands()) {
    if (!command.withNullText) continue;
    SCOPED_TRACE(command.method);
    connect();
    const LogCapture log;
    EXPECT_EQ(command.withNullText(*facade).print, command.neutral);
    EXPECT_EQ(log.lines().at(0), command.label + nullTextMessage());
    EXPECT_EQ(pcsc.requests(), std::vector<std::string>{"\r"}) << "only the reconnection talks to the reader";
  }
}

TEST_F(EveryCommand, ThrowsAPlainExceptionForANullTextIfExternalExceptionsAreOn) {
  facade->enableExternalException(true);
  for (const Command& command : commands()) {
    if (!command.withNullText) continue;
    SCOPED_TRACE(command.method);
    const LogCapture log;
    EXPECT_EQ(thrownBy(command.withNullText, *facade), plain_exception);
    EXPECT_EQ(log.text(), command.label + nullTextMessage() + "\n");
  }
}

TEST_F(EveryCommand, DoesNotLookAtANullTextWithoutAChannel) {
  facade->disconnect();
  const LogCapture log;
  for (const Command& command : commands())
    if (command.withNullText) command.withNullText(*facade);
  EXPECT_EQ(log.text(), "");
}

// ---- texts and lists that are handed out

TEST_F(EveryCommand, ReturnsItsTextOrListInAPlaceOfItsOwn) {
  std::map<const void*, std::string> places;
  for (const Command& command : commands()) {
    const Result result = callAnswered(command);
    if (result.text == nullptr && result.list == nullptr) continue;
    const void* const place = result.text != nullptr ? static_cast<const void*>(result.text) : result.list;
    EXPECT_TRUE(places.emplace(place, command.method).second) << command.method << " and " << places[place];
  }
}

TEST_F(EveryCommand, LeavesTheTextsOfTheOthersAlone) {
  std::map<std::string, const char*> texts;
  for (const Command& command : commands()) texts[command.method] = callAnswered(command).text;
  for (const Command& command : commands()) {
    const char* const text = texts[command.method];
    if (text != nullptr) {
      EXPECT_EQ(text, command.result) << command.method;
    }
  }
}

}  // namespace
}  // namespace mvx2test
