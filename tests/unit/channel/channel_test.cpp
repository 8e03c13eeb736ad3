#include <mvx2/Channel.h>

#include <gtest/gtest.h>

#include <locale>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// A transport that keeps what it is asked to send and gives back what it is told to.
class EchoChannel : public Channel {
 public:
  std::string mvx2NoFormattedTransaction(const std::string& request) override {
    requests.push_back(request);
    if (fails) throw std::runtime_error("transport");
    return reply;
  }
  std::string mvx2APDUTransaction(const char* /*data*/, int /*length*/) override { return {}; }
  void rename(const std::string& name) { m_name = name; }

  std::vector<std::string> requests;
  std::string reply;
  bool fails = false;
};

std::string answerIn(const std::string& raw) {
  EchoChannel channel;
  return channel.formatResponse(reinterpret_cast<const unsigned char*>(raw.data()),
                                static_cast<unsigned int>(raw.size()));
}

TEST(FormatMessage, AppendsOneCarriageReturn) { EXPECT_EQ(EchoChannel().formatMessage("value"), "value\r"); }

TEST(FormatMessage, MakesALoneCarriageReturnOfTheEmptyCommand) {
  EXPECT_EQ(EchoChannel().formatMessage(""), "\r");
}

TEST(FormatMessage, LeavesACommandThatHoldsACarriageReturnAnywhere) {
  EXPECT_EQ(EchoChannel().formatMessage("ab\rcd"), "ab\rcd");
  EXPECT_EQ(EchoChannel().formatMessage("\rab"), "\rab");
  EXPECT_EQ(EchoChannel().formatMessage("ab\r"), "ab\r");
}

TEST(FormatMessage, AppendsACarriageReturnAfterALineFeed) {
  EXPECT_EQ(EchoChannel().formatMessage("ab\n"), "ab\n\r");
}

TEST(FormatMessage, KeepsNulBytes) {
  EXPECT_EQ(EchoChannel().formatMessage(std::string("a\0b", 3)), std::string("a\0b\r", 4));
}

TEST(FormatResponse, CutsTheAnswerOutOfEchoPromptAndStatusBytes) {
  EXPECT_EQ(answerIn(std::string("value\r\n1250\r\n>\x90\0", 15)), "1250");
}

TEST(FormatResponse, IsEmptyForAnEmptyReply) {
  EXPECT_EQ(EchoChannel().formatResponse(nullptr, 0), "");
  EXPECT_EQ(answerIn(""), "");
}

TEST(FormatResponse, IsEmptyForAReplyOfOneByte) {
  EXPECT_EQ(answerIn("x"), "");
  EXPECT_EQ(answerIn("\n"), "");
}

TEST(FormatResponse, IsEmptyWithoutALineFeedAfterTheFirstByte) {
  EXPECT_EQ(answerIn("value 12"), "");
  EXPECT_EQ(answerIn("\nvalue 12"), "");
}

TEST(FormatResponse, NeverEndsTheEchoAtIndexZero) { EXPECT_EQ(answerIn("\nab\ncd"), "cd"); }

TEST(FormatResponse, EndsTheEchoAtALineFeedAtIndexOne) { EXPECT_EQ(answerIn("x\nab"), "ab"); }

TEST(FormatResponse, IsEmptyWhenTheEchoIsAll) {
  EXPECT_EQ(answerIn("x\n"), "");
  EXPECT_EQ(answerIn("value\r\n"), "");
}

TEST(FormatResponse, KeepsInnerLineFeedsAndRemovesTheLast) { EXPECT_EQ(answerIn("x\nab\ncd\n>"), "ab\ncd"); }

TEST(FormatResponse, RemovesTheLastLineFeedEvenWhenTextFollowsIt) {
  EXPECT_EQ(answerIn("x\nab\ncd"), "abcd");
}

TEST(FormatResponse, RemovesOneOfTwoFinalLineFeeds) { EXPECT_EQ(answerIn("x\nab\n\n>"), "ab\n"); }

TEST(FormatResponse, RemovesEveryCarriageReturn) { EXPECT_EQ(answerIn("x\n\ra\rb\r\r>"), "ab"); }

TEST(FormatResponse, StopsAtTheFirstPromptWhicheverItIs) {
  EXPECT_EQ(answerIn("x\nab#cd>ef$"), "ab");
  EXPECT_EQ(answerIn("x\nab>cd#ef$"), "ab");
  EXPECT_EQ(answerIn("x\nab$cd#ef>"), "ab");
}

TEST(FormatResponse, IsEmptyWhenThePromptFollowsTheEcho) { EXPECT_EQ(answerIn("x\n>12"), ""); }

TEST(FormatResponse, IgnoresPromptsInTheEcho) { EXPECT_EQ(answerIn("#>$\r\n12\r\n>"), "12"); }

TEST(FormatResponse, KeepsNulBytesOfTheAnswer) {
  EXPECT_EQ(answerIn(std::string("x\na\0b>", 6)), std::string("a\0b", 3));
}

TEST(FormatResponse, NeedsNoPromptAtTheEnd) { EXPECT_EQ(answerIn("value\r\n12"), "12"); }

// The rules of the reply once more, byte by byte and in one pass.
std::string oracle(const std::string& raw) {
  std::size_t start = 2;
  if (raw.size() > 1 && raw[1] != '\n') {
    std::size_t i = 2;
    while (i < raw.size() && raw[i] != '\n') ++i;
    start = i + 1;
  }
  std::string kept;
  std::size_t lastFeed = std::string::npos;
  for (std::size_t i = start; i < raw.size(); ++i) {
    if (raw[i] == '#' || raw[i] == '>' || raw[i] == '$') break;
    if (raw[i] == '\r') continue;
    if (raw[i] == '\n') lastFeed = kept.size();
    kept += raw[i];
  }
  if (lastFeed != std::string::npos) kept = kept.substr(0, lastFeed) + kept.substr(lastFeed + 1);
  return kept;
}

TEST(FormatResponse, AgreesWithAnOracleOnRandomBytes) {
  std::mt19937 random(20150702);
  const std::string frequent = "\r\n#>$a0";
  for (int round = 0; round < 100000; ++round) {
    std::string raw(random() % 70, '\0');
    for (char& c : raw)
      c = random() % 3 == 0 ? frequent[random() % frequent.size()] : static_cast<char>(random() % 256);
    ASSERT_EQ(answerIn(raw), oracle(raw)) << testing::PrintToString(raw);
  }
}

TEST(Transaction, FramesTheCommandAndExtractsTheAnswer) {
  EchoChannel channel;
  channel.reply = "credit\r\n77\r\n>";
  EXPECT_EQ(channel.mvx2Transaction("credit"), "77");
  EXPECT_EQ(channel.requests, std::vector<std::string>{"credit\r"});
}

TEST(Transaction, AddsAnArgumentAfterABlank) {
  EchoChannel channel;
  channel.mvx2Transaction("value", 1234567);
  EXPECT_EQ(channel.requests, std::vector<std::string>{"value 1234567\r"});
}

TEST(Transaction, WritesANegativeArgumentWithItsSign) {
  EchoChannel channel;
  channel.mvx2Transaction("value", -2147483647 - 1);
  EXPECT_EQ(channel.requests, std::vector<std::string>{"value -2147483648\r"});
}

TEST(Transaction, PassesOnWhatTheTransportThrows) {
  EchoChannel channel;
  channel.fails = true;
  EXPECT_THROW(channel.mvx2Transaction("credit"), std::runtime_error);
}

TEST(Transaction, AsksOnceWhateverTheReply) {
  EchoChannel channel;
  EXPECT_EQ(channel.mvx2Transaction("credit"), "");
  EXPECT_EQ(channel.requests.size(), 1U);
}

// A derived channel may change any step.
class MarkingChannel : public EchoChannel {
 public:
  std::string formatMessage(const std::string& command) override { return "<" + command + ">"; }
  std::string formatResponse(const unsigned char* /*data*/, unsigned int length) override {
    return "length " + std::to_string(length);
  }
};

TEST(Transaction, GoesThroughTheVirtualSteps) {
  MarkingChannel channel;
  channel.reply = "12345";
  EXPECT_EQ(channel.mvx2Transaction("credit"), "length 5");
  EXPECT_EQ(channel.requests, std::vector<std::string>{"<credit>"});
}

struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Transaction, WritesTheArgumentTheSameInEveryLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  EchoChannel channel;
  channel.mvx2Transaction("value", 1234567);
  std::locale::global(before);
  EXPECT_EQ(channel.requests, std::vector<std::string>{"value 1234567\r"});
}

TEST(ChannelName, IsEmptyUnlessADerivedChannelSetsIt) {
  EchoChannel channel;
  EXPECT_STREQ(channel.name(), "");
  channel.rename("terminal");
  EXPECT_STREQ(channel.name(), "terminal");
}

}  // namespace
