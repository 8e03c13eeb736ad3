#include "connected_channel.h"
#include "fixed_random.h"
#include "unlock_vector.h"

#include <algorithm>
#include <ostream>

namespace {

using mvx2test::a_failure;
using mvx2test::Bytes;
using mvx2test::Calls;
using mvx2test::FixedRandom;
using mvx2test::hex;
using mvx2test::joined;
using mvx2test::unhex;
using mvx2test::UnlockVector;

constexpr long untouched = 77;

const UnlockVector& vector() { return UnlockVector::instance(); }

class SamUnlock : public mvx2test::ConnectedChannel {
 protected:
  void SetUp() override {
    ConnectedChannel::SetUp();
    random.reset();
  }

  void giveRandomNumbers() {
    random.give(vector().rnd1);
    random.give(vector().rndA);
  }
  bool unlock() { return channel.unlock(key.data(), status, 16); }
  bool part1() { return channel.unlock_part1(rnd2.data(), status); }
  bool part2() { return channel.unlock_part2(key.data(), rnd2.data(), rnd1.data(), reply.data(), status); }
  bool part3() { return channel.unlock_part3(key.data(), reply.data(), rnd2.data(), rnd1.data(), status); }
  // Gives step 3 what the steps before it yield.
  void skipToPart3() {
    rnd1 = vector().rnd1;
    reply = vector().step2Data();
  }

  FixedRandom& random = FixedRandom::instance();
  Bytes key = vector().key;
  Bytes rnd2 = vector().rnd2;
  Bytes rnd1 = Bytes(12, 0xEE);
  Bytes reply = Bytes(24, 0xEE);
  long status = untouched;
};

const std::string step1_command = "80 10 00 00 02 01 00 00";

std::string step2Command() {
  return "80 10 00 00 14 " + hex(joined(vector().hostMac, vector().rnd1)) + " 00";
}

std::string step3Command() { return "80 10 00 00 20 " + hex(vector().cryptogram) + " 00"; }

// ---- the whole

TEST_F(SamUnlock, SendsAndAcceptsTheBytesOfTheVector) {
  giveRandomNumbers();
  pcsc.reply(vector().step1Reply());
  pcsc.reply(vector().step2Reply());
  pcsc.reply(UnlockVector::step3Reply());
  EXPECT_TRUE(unlock());
  EXPECT_EQ(sent(), (Calls{step1_command, step2Command(), step3Command()}));
  EXPECT_EQ(status, 0);
}

TEST_F(SamUnlock, IsAReaderTransactionForEachStep) {
  giveRandomNumbers();
  pcsc.reply(vector().step1Reply());
  pcsc.reply(vector().step2Reply());
  pcsc.reply(UnlockVector::step3Reply());
  unlock();
  const Calls one = {"SCardBeginTransaction", "SCardTransmit", "SCardEndTransaction"};
  Calls three = one;
  three.insert(three.end(), one.begin(), one.end());
  three.insert(three.end(), one.begin(), one.end());
  EXPECT_EQ(pcsc.callNames(), three);
}

TEST_F(SamUnlock, DoesNotReadTheKeyLength) {
  for (const unsigned long length : {0UL, 1000UL}) {
    giveRandomNumbers();
    pcsc.reply(vector().step1Reply());
    pcsc.reply(vector().step2Reply());
    pcsc.reply(UnlockVector::step3Reply());
    EXPECT_TRUE(channel.unlock(key.data(), status, length));
  }
}

TEST_F(SamUnlock, StopsAfterAFailedFirstStep) {
  pcsc.reply(unhex("69 82"));
  EXPECT_FALSE(unlock());
  EXPECT_EQ(sent(), Calls{step1_command});
  EXPECT_EQ(random.openings, 0);
}

TEST_F(SamUnlock, StopsAfterAFailedSecondStep) {
  giveRandomNumbers();
  pcsc.reply(vector().step1Reply());
  pcsc.reply(unhex("69 82 00"));
  EXPECT_FALSE(unlock());
  EXPECT_EQ(sent(), (Calls{step1_command, step2Command()}));
  EXPECT_EQ(status, -1);
  EXPECT_EQ(random.openings, 1);
}

TEST_F(SamUnlock, FailsWithAFailedThirdStep) {
  giveRandomNumbers();
  pcsc.reply(vector().step1Reply());
  pcsc.reply(vector().step2Reply());
  pcsc.reply(unhex("00 90 AF"));
  EXPECT_FALSE(unlock());
  EXPECT_EQ(status, -3);
}

TEST_F(SamUnlock, FailsWithAnotherKey) {
  giveRandomNumbers();
  key[0] = static_cast<unsigned char>(key[0] ^ 1);
  pcsc.reply(vector().step1Reply());
  pcsc.reply(vector().step2Reply());
  EXPECT_FALSE(unlock());
  EXPECT_EQ(status, -2);
}

TEST_F(SamUnlock, StartsAtTheFirstStepAgainAfterAFailure) {
  pcsc.reply(vector().step1Reply());
  pcsc.reply(unhex("69 82 00"));
  unlock();
  pcsc.apdus.clear();
  unlock();
  EXPECT_EQ(sent().at(0), step1_command);
}

TEST_F(SamUnlock, SendsNothingWithoutAConnection) {
  SAMChannel unconnected;
  EXPECT_FALSE(unconnected.unlock(key.data(), status, 16));
  EXPECT_EQ(pcsc.calls, Calls{});
  EXPECT_EQ(status, untouched);
}

TEST_F(SamUnlock, TakesAFreshFirstRandomNumberEachTime) {
  Calls commands;
  for (int i = 0; i < 2; ++i) {
    pcsc.reply(vector().step1Reply());
    unlock();
    ASSERT_EQ(sent().size(), 2U);
    commands.push_back(sent().back());
    pcsc.apdus.clear();
  }
  EXPECT_NE(commands[0], commands[1]);
}

TEST_F(SamUnlock, TakesAFreshSecondRandomNumberEachTime) {
  Calls commands;
  for (int i = 0; i < 2; ++i) {
    random.give(vector().rnd1);
    pcsc.reply(vector().step1Reply());
    pcsc.reply(vector().step2Reply());
    unlock();
    ASSERT_EQ(sent().size(), 3U);
    commands.push_back(sent().back());
    pcsc.apdus.clear();
  }
  EXPECT_NE(commands[0], commands[1]);
}

TEST_F(SamUnlock, ReadsRandomNumbersOnlyAndClosesThem) {
  giveRandomNumbers();
  pcsc.reply(vector().step1Reply());
  pcsc.reply(vector().step2Reply());
  pcsc.reply(UnlockVector::step3Reply());
  unlock();
  EXPECT_EQ(random.openings, 2);
  EXPECT_EQ(random.mode[0], 'r');
  EXPECT_EQ(random.open, 0);
}

// ---- step 1

TEST_F(SamUnlock, TakesTheModulesRandomNumberInStepOne) {
  pcsc.reply(vector().step1Reply());
  rnd2 = Bytes(12, 0xEE);
  EXPECT_TRUE(part1());
  EXPECT_EQ(rnd2, vector().rnd2);
  EXPECT_EQ(sent(), Calls{step1_command});
}

TEST_F(SamUnlock, LeavesTheStatusAloneInASuccessfulStepOne) {
  pcsc.reply(vector().step1Reply());
  part1();
  EXPECT_EQ(status, untouched);
}

struct StepReply {
  std::string name;
  Bytes reply;
  LONG pcscStatus;
  long status;
};

void PrintTo(const StepReply& step, std::ostream* out) { *out << hex(step.reply); }

const auto nameOf = [](const auto& test) { return test.param.name; };

class SamUnlockStepOne : public SamUnlock, public testing::WithParamInterface<StepReply> {};

TEST_P(SamUnlockStepOne, FailsWithItsStatus) {
  pcsc.reply({GetParam().reply, GetParam().pcscStatus});
  rnd2 = Bytes(12, 0xEE);
  EXPECT_FALSE(part1());
  EXPECT_EQ(status, GetParam().status);
  EXPECT_EQ(rnd2, Bytes(12, 0xEE));
}

INSTANTIATE_TEST_SUITE_P(
    Replies, SamUnlockStepOne,
    testing::Values(StepReply{"PcscFails", joined(Bytes(12, 1), {0x90, 0xAF}), a_failure, a_failure},
                    StepReply{"Empty", {}, 0, -3}, StepReply{"StatusWordAlone", {0x90, 0xAF}, 0, -3},
                    StepReply{"ThreeBytes", {0x01, 0x90, 0xAF}, 0, -2},
                    StepReply{"ThirteenBytes", joined(Bytes(11, 1), {0x90, 0xAF}), 0, -2},
                    StepReply{"SixteenBytes", joined(Bytes(14, 1), {0x90, 0xAF}), 0, -2},
                    StepReply{"SixteenBytesOfAnotherStatusWord", joined(Bytes(14, 1), {0x69, 0x82}), 0, -2},
                    StepReply{"Done", joined(Bytes(12, 1), {0x90, 0x00}), 0, -1},
                    StepReply{"AnotherFirstByte", joined(Bytes(12, 1), {0x91, 0xAF}), 0, -1}),
    nameOf);

// ---- step 2

TEST_F(SamUnlock, ProvesTheKeyAndChecksTheModuleInStepTwo) {
  random.give(vector().rnd1);
  pcsc.reply(vector().step2Reply());
  EXPECT_TRUE(part2());
  EXPECT_EQ(sent(), Calls{step2Command()});
  EXPECT_EQ(rnd1, vector().rnd1);
  EXPECT_EQ(reply, vector().step2Data());
  EXPECT_EQ(status, 0);
}

class SamUnlockStepTwo : public SamUnlock, public testing::WithParamInterface<StepReply> {};

TEST_P(SamUnlockStepTwo, FailsWithItsStatusAndWithoutAReply) {
  random.give(vector().rnd1);
  pcsc.reply({GetParam().reply, GetParam().pcscStatus});
  EXPECT_FALSE(part2());
  EXPECT_EQ(status, GetParam().status);
  EXPECT_EQ(rnd1, vector().rnd1);
  EXPECT_EQ(reply, Bytes(24, 0xEE));
}

INSTANTIATE_TEST_SUITE_P(
    Replies, SamUnlockStepTwo,
    testing::Values(StepReply{"PcscFails", vector().step2Reply(), a_failure, a_failure},
                    StepReply{"Empty", {}, 0, -3}, StepReply{"StatusWordAlone", {0x90, 0xAF}, 0, -3},
                    StepReply{"Done", joined(vector().step2Data(), {0x90, 0x00}), 0, -1},
                    StepReply{"AnotherFirstByte", joined(vector().step2Data(), {0x91, 0xAF}), 0, -1},
                    StepReply{"ThreeBytes", {0x01, 0x90, 0x00}, 0, -1}),
    nameOf);

class SamUnlockMac : public SamUnlock, public testing::WithParamInterface<std::size_t> {};

TEST_P(SamUnlockMac, IsCheckedInEveryBit) {
  for (int bit = 0; bit < 8; ++bit) {
    random.give(vector().rnd1);
    Bytes wrong = vector().step2Reply();
    wrong[GetParam()] = static_cast<unsigned char>(wrong[GetParam()] ^ (1 << bit));
    pcsc.reply(wrong);
    EXPECT_FALSE(part2()) << bit;
    EXPECT_EQ(status, -2) << bit;
    EXPECT_EQ(reply, Bytes(wrong.begin(), wrong.begin() + 24)) << bit;
  }
}

INSTANTIATE_TEST_SUITE_P(Bytes, SamUnlockMac, testing::Range(std::size_t{0}, std::size_t{8}));

TEST_F(SamUnlock, TakesTheFirst24BytesOfALongerStepTwoReply) {
  random.give(vector().rnd1);
  pcsc.reply(joined(joined(vector().step2Data(), {0x01, 0x02}), {0x90, 0xAF}));
  EXPECT_TRUE(part2());
  EXPECT_EQ(reply, vector().step2Data());
}

TEST_F(SamUnlock, FillsAShortStepTwoReplyWithZeros) {
  random.give(vector().rnd1);
  pcsc.reply(joined(vector().samMac, {0x90, 0xAF}));
  EXPECT_TRUE(part2());
  EXPECT_EQ(reply, joined(joined(vector().samMac, {0x90, 0xAF}), Bytes(14, 0x00)));
}

TEST_F(SamUnlock, FailsInStepTwoWhenRandomNumbersCannotBeOpened) {
  random.cannotBeOpened();
  EXPECT_FALSE(part2());
  EXPECT_EQ(status, -5);
  EXPECT_EQ(pcsc.calls, Calls{});
  EXPECT_EQ(rnd1, Bytes(12, 0xEE));
}

TEST_F(SamUnlock, FailsInStepTwoWhenThereAreTooFewRandomNumbers) {
  random.give(Bytes(11, 0x01));
  EXPECT_FALSE(part2());
  EXPECT_EQ(status, -5);
  EXPECT_EQ(pcsc.calls, Calls{});
  EXPECT_EQ(rnd1, Bytes(12, 0xEE));
  EXPECT_EQ(random.open, 0);
}

// ---- step 3

TEST_F(SamUnlock, SendsTheCryptogramInStepThree) {
  skipToPart3();
  random.give(vector().rndA);
  pcsc.reply(UnlockVector::step3Reply());
  EXPECT_TRUE(part3());
  EXPECT_EQ(sent(), Calls{step3Command()});
  EXPECT_EQ(status, 0);
}

TEST_F(SamUnlock, AcceptsThreeBytesInStepThree) {
  skipToPart3();
  random.give(vector().rndA);
  pcsc.reply(unhex("00 90 00"));
  EXPECT_TRUE(part3());
}

class SamUnlockStepThree : public SamUnlock, public testing::WithParamInterface<StepReply> {};

TEST_P(SamUnlockStepThree, FailsWithItsStatus) {
  skipToPart3();
  random.give(vector().rndA);
  pcsc.reply({GetParam().reply, GetParam().pcscStatus});
  EXPECT_FALSE(part3());
  EXPECT_EQ(status, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, SamUnlockStepThree,
    testing::Values(StepReply{"PcscFails", UnlockVector::step3Reply(), a_failure, a_failure},
                    StepReply{"Empty", {}, 0, 0}, StepReply{"StatusWordAlone", {0x90, 0x00}, 0, 0},
                    StepReply{"AnotherStatusWordAlone", {0x69, 0x82}, 0, 0},
                    StepReply{"MoreToCome", joined(Bytes(16, 1), {0x90, 0xAF}), 0, -3},
                    StepReply{"AnotherFirstByte", joined(Bytes(16, 1), {0x91, 0x00}), 0, -3},
                    StepReply{"ThreeBytes", {0x00, 0x69, 0x82}, 0, -3}),
    nameOf);

TEST_F(SamUnlock, LeavesTheStatusAloneWhenStepThreeHasNoRandomNumbers) {
  skipToPart3();
  random.cannotBeOpened();
  EXPECT_FALSE(part3());
  EXPECT_EQ(status, untouched);
  EXPECT_EQ(pcsc.calls, Calls{});
}

TEST_F(SamUnlock, LeavesTheStatusAloneWhenStepThreeHasTooFewRandomNumbers) {
  skipToPart3();
  random.give(Bytes(15, 0x01));
  EXPECT_FALSE(part3());
  EXPECT_EQ(status, untouched);
  EXPECT_EQ(pcsc.calls, Calls{});
  EXPECT_EQ(random.open, 0);
}

TEST_F(SamUnlock, ReportsZeroWhenOnlyTheLastRandomNumberIsMissing) {
  random.give(vector().rnd1);
  random.cannotBeOpened();
  pcsc.reply(vector().step1Reply());
  pcsc.reply(vector().step2Reply());
  EXPECT_FALSE(unlock());
  EXPECT_EQ(status, 0);
}

// ---- through a derived channel

// Answers with 69 bytes that end like this, and claims to have written more.
class Boasting : public SAMChannel {
 public:
  explicit Boasting(const Bytes& end) : m_reply(joined(Bytes(67, 0x00), end)) {}

  long APDUTransaction(unsigned char* /*data*/, unsigned long /*dataLength*/, unsigned char* response,
                       unsigned long& responseLength, unsigned char /*p2*/, unsigned char /*p1*/,
                       unsigned char /*ins*/, unsigned char /*le*/, bool /*sendLe*/,
                       unsigned char /*cla*/) override {
    std::copy(m_reply.begin(), m_reply.end(), response);
    responseLength = 0x7FFFFFFF;
    return 0;
  }

 private:
  Bytes m_reply;
};

TEST_F(SamUnlock, TakesTheLengthThatADerivedChannelReportsAsAtMost69) {
  Boasting boasting({0x90, 0xAF});
  EXPECT_FALSE(boasting.unlock_part2(key.data(), rnd2.data(), rnd1.data(), reply.data(), status));
  EXPECT_EQ(status, -2);
  EXPECT_FALSE(boasting.unlock_part3(key.data(), reply.data(), rnd2.data(), rnd1.data(), status));
  EXPECT_EQ(status, -3);
}

// ---- key derivation

TEST_F(SamUnlock, DerivesTheKeyOfTheVectorAndClearsTheChainingValue) {
  Bytes kxe(16, 0xEE);
  Bytes iv(16, 0xEE);
  rnd1 = vector().rnd1;
  channel.derivatedSamAESKey(key.data(), rnd1.data(), rnd2.data(), kxe.data(), iv.data());
  EXPECT_EQ(kxe, vector().kxe);
  EXPECT_EQ(iv, Bytes(16, 0x00));
}

}  // namespace
