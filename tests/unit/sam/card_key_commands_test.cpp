#include "connected_channel.h"
#include "unlock_vector.h"

#include <climits>
#include <functional>
#include <ostream>
#include <utility>

namespace {

using mvx2test::a_failure;
using mvx2test::Bytes;
using mvx2test::Calls;
using mvx2test::hex;
using mvx2test::joined;
using mvx2test::unhex;

// n, n + 1, n + 2, ...
Bytes counting(unsigned char first, std::size_t length) {
  Bytes bytes;
  for (std::size_t i = 0; i < length; ++i) bytes.push_back(static_cast<unsigned char>(first + i));
  return bytes;
}

std::vector<char> chars(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

// What a command gets to write into.
struct Output {
  Bytes data = Bytes(69, 0xEE);
  unsigned long length = 77;

  bool operator==(const Output& other) const { return data == other.data && length == other.length; }
};

// `data` at the start of an output and this length.
Output holding(const Bytes& data, unsigned long length) {
  Output output;
  std::copy(data.begin(), data.end(), output.data.begin());
  output.length = length;
  return output;
}

// One command with fixed arguments, what it sends, and what it makes of a good reply.
struct Command {
  std::string name;
  std::function<bool(SAMChannel&, Output&)> run;
  std::string sends;
  Bytes goodReply;
  Output output;  // after the good reply
};

void PrintTo(const Command& command, std::ostream* out) { *out << command.name; }

bool authenticate(SAMChannel& channel, Output& output) {
  Bytes challenge = counting(0xA0, 16);
  return channel.authenticatePICC(0x05, 0x02, challenge.data(), output.data.data(), challenge.size());
}

bool authenticateDiversified(SAMChannel& channel, Output& output) {
  Bytes challenge = counting(0xA0, 16);
  Bytes uid = counting(0x01, 7);
  return channel.authenticatePICC_Div(0x05, 0x02, challenge.data(), uid.data(), output.data.data());
}

bool finishAuthentication(SAMChannel& channel, Output& /*output*/) {
  Bytes answer = counting(0xB0, 16);
  return channel.authenticatePICC(answer.data(), answer.size());
}

bool changeKey(SAMChannel& channel, Output& output) {
  Bytes accessBytes = {1, 2, 3, 4};
  auto length = static_cast<unsigned char>(output.length);
  const bool done =
      channel.changeKeyMIFARE(output.data.data(), length, accessBytes.data(), 0x0A, 0x0B, 0x0C, 0x0D);
  output.length = length;
  return done;
}

bool decipher(SAMChannel& channel, Output& output, std::size_t inLength) {
  // Exactly as long as is said: a sanitizer sees the first byte too many.
  std::vector<char> in = chars(counting(0x30, inLength));
  in.shrink_to_fit();
  std::vector<char> out = chars(output.data);
  auto length = static_cast<char>(output.length);
  const bool done = channel.decipherOfflineData(in.data(), out.data(), length, static_cast<char>(inLength));
  output.data = Bytes(out.begin(), out.end());
  output.length = static_cast<unsigned char>(length);
  return done;
}

bool activate(SAMChannel& channel, std::size_t divLength) {
  std::vector<char> input = chars(counting(0x21, divLength));
  input.shrink_to_fit();
  return channel.activateOfflineKey(input.data(), static_cast<char>(divLength), '\x83', '\xEF');
}

bool dump(SAMChannel& channel, Output& output) {
  return channel.dumpSessionKey(output.data.data(), output.length);
}

bool generate(SAMChannel& channel, Output& output) {
  Bytes data = counting(0x60, 3);
  return channel.generateMAC(data.data(), data.size(), output.data.data(), output.length);
}

const Bytes answer32 = counting(0xC0, 32);
const Bytes answer16 = counting(0xD0, 16);
const Bytes done = {0x90, 0x00};
const Bytes more = {0x90, 0xAF};

const std::vector<Command> commands = {
    {"AuthenticatePICC", authenticate,
     "80 0A 00 00 12 05 02 A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB AC AD AE AF 00", joined(answer32, more),
     holding(answer32, 77)},
    {"AuthenticatePICCDiv", authenticateDiversified,
     "80 0A 11 00 19 05 02 A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB AC AD AE AF 01 02 03 04 05 06 07 00",
     joined(answer32, more), holding(answer32, 77)},
    {"AuthenticatePICCSecondStep", finishAuthentication,
     "80 0A 00 00 10 B0 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA BB BC BD BE BF", done, Output()},
    {"ChangeKeyMIFARE", changeKey, "80 C5 02 00 08 0C 0B 0D 01 02 03 04 0A 00",
     joined(counting(0xC0, 6), done), holding(counting(0xC0, 6), 6)},
    {"DecipherOfflineData", [](SAMChannel& channel, Output& output) { return decipher(channel, output, 16); },
     "80 0D 00 00 10 30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F 00", joined(answer16, done),
     holding(answer16, 16)},
    {"ActivateOfflineKey", [](SAMChannel& channel, Output& /*output*/) { return activate(channel, 7); },
     "80 01 01 00 09 10 83 21 22 23 24 25 26 27", done, Output()},
    {"DumpSessionKey", dump, "80 D5 00 00 00", joined(answer16, done), holding(answer16, 16)},
    {"GenerateMAC", generate, "80 7C 00 00 03 60 61 62 00", done, Output()},
};

const auto nameOf = [](const auto& test) { return test.param.name; };

class SamCommand : public mvx2test::ConnectedChannel, public testing::WithParamInterface<Command> {
 protected:
  bool run() { return GetParam().run(channel, output); }

  Output output;
};

TEST_P(SamCommand, SendsTheseBytesAndTakesAGoodReply) {
  pcsc.reply(GetParam().goodReply);
  EXPECT_TRUE(run());
  EXPECT_EQ(sent(), Calls{GetParam().sends});
  EXPECT_EQ(output, GetParam().output);
}

TEST_P(SamCommand, FailsWithThePcscStatusAndLeavesTheOutputAlone) {
  pcsc.reply({GetParam().goodReply, a_failure});
  EXPECT_FALSE(run());
  EXPECT_EQ(output, Output());
}

TEST_P(SamCommand, FailsWithoutAConnection) {
  SAMChannel unconnected;
  EXPECT_FALSE(GetParam().run(unconnected, output));
  EXPECT_EQ(output, Output());
}

INSTANTIATE_TEST_SUITE_P(All, SamCommand, testing::ValuesIn(commands), nameOf);

// ---- replies that are refused

std::vector<Command> commandsThatExamineTheReply() {
  std::vector<Command> examining;
  for (const Command& command : commands)
    if (command.name != "GenerateMAC") examining.push_back(command);
  return examining;
}

using SamCommandReply = SamCommand;

TEST_P(SamCommandReply, IsRefusedInAnyOtherLength) {
  const Bytes& good = GetParam().goodReply;
  const Bytes statusWord(good.end() - 2, good.end());
  for (std::size_t length = 0; length <= 69; ++length) {
    if (length == good.size()) continue;
    // The first bytes of a good reply; as many as there is room for end with its status word.
    Bytes reply = good;
    reply.resize(length, 0x90);
    if (length >= 2) std::copy(statusWord.begin(), statusWord.end(), reply.end() - 2);
    pcsc.reply(reply);
    EXPECT_FALSE(run()) << length;
  }
  EXPECT_EQ(output, Output());
}

TEST_P(SamCommandReply, IsRefusedWithAnotherFirstStatusByte) {
  for (const unsigned char sw1 : Bytes{0x00, 0x6A, 0x91, 0xFF}) {
    Bytes reply = GetParam().goodReply;
    *(reply.end() - 2) = sw1;
    pcsc.reply(reply);
    EXPECT_FALSE(run()) << int{sw1};
  }
  EXPECT_EQ(output, Output());
}

INSTANTIATE_TEST_SUITE_P(All, SamCommandReply, testing::ValuesIn(commandsThatExamineTheReply()), nameOf);

std::vector<Command> commandsOfOneStep() {
  std::vector<Command> oneStep;
  for (const Command& command : commandsThatExamineTheReply())
    if (command.goodReply.back() == 0x00) oneStep.push_back(command);
  return oneStep;
}

using SamOneStepCommand = SamCommand;

TEST_P(SamOneStepCommand, RefusesAnotherSecondStatusByte) {
  for (const unsigned char sw2 : Bytes{0x01, 0xAF, 0xFF}) {
    Bytes reply = GetParam().goodReply;
    reply.back() = sw2;
    pcsc.reply(reply);
    EXPECT_FALSE(run()) << int{sw2};
  }
  EXPECT_EQ(output, Output());
}

INSTANTIATE_TEST_SUITE_P(All, SamOneStepCommand, testing::ValuesIn(commandsOfOneStep()), nameOf);

// ---- through the virtual function

// A channel that answers by itself and keeps what it was asked for.
class Answering : public SAMChannel {
 public:
  explicit Answering(Bytes reply) : m_reply(std::move(reply)) {}

  long APDUTransaction(unsigned char* data, unsigned long dataLength, unsigned char* response,
                       unsigned long& responseLength, unsigned char p2, unsigned char p1, unsigned char ins,
                       unsigned char le, bool sendLe, unsigned char cla) override {
    Bytes apdu = {cla, ins, p1, p2};
    if (dataLength > 0) apdu.push_back(static_cast<unsigned char>(dataLength));
    apdu.insert(apdu.end(), data, data + dataLength);
    if (sendLe) apdu.push_back(le);
    asked.push_back(hex(apdu));
    std::copy(m_reply.begin(), m_reply.end(), response);
    responseLength = m_reply.size();
    return 0;
  }

  Calls asked;

 private:
  Bytes m_reply;
};

TEST_P(SamCommand, GoesThroughTheVirtualFunction) {
  Answering answering(GetParam().goodReply);
  EXPECT_TRUE(GetParam().run(answering, output));
  EXPECT_EQ(answering.asked, Calls{GetParam().sends});
  EXPECT_EQ(output, GetParam().output);
  EXPECT_TRUE(pcsc.calls.empty());
}

// ---- card authentication

using SamCardAuthentication = mvx2test::ConnectedChannel;

TEST_F(SamCardAuthentication, HandsTheAnswerOverAfterADoneStatus) {
  for (const auto& step : {authenticate, authenticateDiversified}) {
    Output output;
    pcsc.reply(joined(answer32, done));
    EXPECT_TRUE(step(channel, output));
    EXPECT_EQ(output, holding(answer32, 77));
  }
}

TEST_F(SamCardAuthentication, SucceedsWithoutAnAnswerForAnotherSecondStatusByte) {
  for (const auto& step : {authenticate, authenticateDiversified})
    for (const unsigned char sw2 : Bytes{0x01, 0x05, 0xAE, 0xFF}) {
      Output output;
      pcsc.reply(joined(answer32, {0x90, sw2}));
      EXPECT_TRUE(step(channel, output));
      EXPECT_EQ(output, Output());
    }
}

TEST_F(SamCardAuthentication, SendsTheKeyAloneWithoutAChallenge) {
  Output output;
  channel.authenticatePICC(0x05, 0x02, nullptr, output.data.data(), 0);
  EXPECT_EQ(sent(), Calls{"80 0A 00 00 02 05 02 00"});
}

TEST_F(SamCardAuthentication, TakesAChallengeOfUpTo61Bytes) {
  Bytes challenge = counting(0x01, 61);
  Output output;
  pcsc.reply(joined(answer32, more));
  EXPECT_TRUE(channel.authenticatePICC(0x05, 0x02, challenge.data(), output.data.data(), 61));
  EXPECT_EQ(sent(), Calls{"80 0A 00 00 3F 05 02 " + hex(challenge) + " 00"});
}

TEST_F(SamCardAuthentication, RefusesALongerChallengeBeforeAnyCall) {
  Bytes challenge = counting(0x01, 256);
  Output output;
  for (const unsigned long length : {62UL, 67UL, 68UL, 255UL, 256UL, ULONG_MAX - 1, ULONG_MAX})
    EXPECT_FALSE(channel.authenticatePICC(0x05, 0x02, challenge.data(), output.data.data(), length));
  EXPECT_FALSE(channel.authenticatePICC(0x05, 0x02, nullptr, output.data.data(), 16));
  EXPECT_TRUE(pcsc.calls.empty());
}

TEST_F(SamCardAuthentication, TakesASecondStepOfUpTo64Bytes) {
  Bytes answer = counting(0x01, 64);
  pcsc.reply(done);
  EXPECT_TRUE(channel.authenticatePICC(answer.data(), 64));
  EXPECT_EQ(sent(), Calls{"80 0A 00 00 40 " + hex(answer)});
  pcsc.calls.clear();
  EXPECT_FALSE(channel.authenticatePICC(answer.data(), 65));
  EXPECT_TRUE(pcsc.calls.empty());
}

TEST_F(SamCardAuthentication, SendsTheHeaderAloneForAnEmptySecondStep) {
  channel.authenticatePICC(nullptr, 0);
  EXPECT_EQ(sent(), Calls{"80 0A 00 00"});
}

// ---- offline data and key

using SamOffline = mvx2test::ConnectedChannel;

TEST_F(SamOffline, SendsSixteenBytesFilledUpWithZeros) {
  for (const std::size_t length : {0U, 1U, 15U}) {
    Output output;
    decipher(channel, output, length);
    const Bytes block = joined(counting(0x30, length), Bytes(16 - length, 0x00));
    EXPECT_EQ(sent().back(), "80 0D 00 00 10 " + hex(block) + " 00");
  }
}

TEST_F(SamOffline, SendsTheFirstSixteenBytesOfMore) {
  for (const std::size_t length : {17U, 127U, 128U, 255U}) {
    Output output;
    decipher(channel, output, length);
    EXPECT_EQ(sent().back(), "80 0D 00 00 10 " + hex(counting(0x30, 16)) + " 00");
  }
}

struct Activation {
  std::size_t divLength;
  std::string sends;
};

void PrintTo(const Activation& activation, std::ostream* out) { *out << activation.divLength; }

class SamActivation : public mvx2test::ConnectedChannel, public testing::WithParamInterface<Activation> {};

TEST_P(SamActivation, LaysItsInputOut) {
  pcsc.reply(done);
  EXPECT_TRUE(activate(channel, GetParam().divLength));
  EXPECT_EQ(sent(), Calls{GetParam().sends});
}

INSTANTIATE_TEST_SUITE_P(Lengths, SamActivation,
                         testing::Values(Activation{0, "80 01 01 00 07 10 83 00 00 00 00 00"},
                                         Activation{1, "80 01 01 00 07 10 83 21 00 00 00 00"},
                                         Activation{3, "80 01 01 00 07 10 83 21 22 23 00 00"},
                                         Activation{4, "80 01 01 00 07 10 83 21 22 23 24 EF"},
                                         Activation{5, "80 01 01 00 07 10 83 21 22 23 24 25"},
                                         Activation{6, "80 01 01 00 07 10 83 21 22 23 24 25"},
                                         Activation{7, "80 01 01 00 09 10 83 21 22 23 24 25 26 27"},
                                         Activation{8, "80 01 01 00 07 10 83 21 22 23 24 25"},
                                         Activation{128, "80 01 01 00 07 10 83 21 22 23 24 25"},
                                         Activation{255, "80 01 01 00 07 10 83 21 22 23 24 25"}));

// ---- MAC

using SamMac = mvx2test::ConnectedChannel;

TEST_F(SamMac, SucceedsWhateverTheModuleAnswers) {
  for (const Bytes& reply : {unhex("6A 82"), Bytes{}, Bytes(69, 0xFF)}) {
    Output output;
    pcsc.reply(reply);
    EXPECT_TRUE(generate(channel, output));
    EXPECT_EQ(output, Output());
  }
}

TEST_F(SamMac, SendsLeAloneWithoutAMessage) {
  unsigned long length = 0;
  EXPECT_TRUE(channel.generateMAC(nullptr, 0, nullptr, length));
  EXPECT_EQ(sent(), Calls{"80 7C 00 00 00"});
}

TEST_F(SamMac, TakesUpTo63Bytes) {
  Bytes message = counting(0x01, 64);
  unsigned long length = 0;
  EXPECT_TRUE(channel.generateMAC(message.data(), 63, nullptr, length));
  pcsc.calls.clear();
  EXPECT_FALSE(channel.generateMAC(message.data(), 64, nullptr, length));
  EXPECT_TRUE(pcsc.calls.empty());
}

}  // namespace
