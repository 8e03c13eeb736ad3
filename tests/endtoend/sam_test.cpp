#include <mvx2/SAMChannel.h>
#include <mvx2/SAMInterfaces.h>

#include "support/simulator.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <string>

namespace {

using mvx2test::sim;

using Key = std::array<unsigned char, 16>;

constexpr const char* the_serial = "04A1B2C3D4E5F6";

std::string hex(const std::array<char, 7>& bytes) {
  std::string text;
  for (const char byte : bytes) {
    constexpr const char* digits = "0123456789ABCDEF";
    text += digits[static_cast<unsigned char>(byte) >> 4];
    text += digits[static_cast<unsigned char>(byte) & 0xF];
  }
  return text;
}

// A module with this key and serial number.
class Sam : public testing::Test {
 protected:
  void SetUp() override {
    sim("set -r sam key 8F3A5C1E7B92D4600A1B2C3D4E5F6071");
    sim(std::string("set -r sam serial ") + the_serial);
  }

  Key key = {0x8F, 0x3A, 0x5C, 0x1E, 0x7B, 0x92, 0xD4, 0x60, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x60, 0x71};
  Key wrongKey = {};
};

// ---- through the facade

class SamByFacade : public Sam {
 protected:
  void TearDown() override { SAMInterfaces::releaseInstance(); }

  // The serial number; empty if it cannot be read.
  std::string serial() {
    std::array<char, 7> bytes{};
    return facade->SAM_getVersion(bytes.data()) ? hex(bytes) : "";
  }
  bool unlock(Key& with) { return facade->SAM_unlock(with.data(), with.size()); }

  SAMInterfaces* facade = SAMInterfaces::getInstance();
};

TEST_F(SamByFacade, IsUnlockedWithItsKeyAndTellsItsSerialNumberBeforeAndAfter) {
  EXPECT_EQ(facade->SAM_connect(1), 1);
  EXPECT_TRUE(facade->SAM_isConnected());
  EXPECT_EQ(serial(), the_serial);
  EXPECT_EQ(sim("get -r sam unlocked"), "0");
  EXPECT_TRUE(unlock(key));
  EXPECT_EQ(sim("get -r sam unlocked"), "1");
  EXPECT_EQ(serial(), the_serial);
}

TEST_F(SamByFacade, StaysLockedForAnotherKeyAndIsUnlockedWithItsOwnAfterwards) {
  facade->SAM_connect(1);
  EXPECT_FALSE(unlock(wrongKey));
  EXPECT_EQ(sim("get -r sam unlocked"), "0");
  EXPECT_TRUE(unlock(key));
}

TEST_F(SamByFacade, IsNotConnectedWithoutItsReader) {
  sim("reader out sam");
  EXPECT_EQ(facade->SAM_connect(1), 1);
  EXPECT_FALSE(facade->SAM_isConnected());
  EXPECT_FALSE(unlock(key));
  EXPECT_EQ(serial(), "");
}

TEST_F(SamByFacade, IsFoundAgainOnceItsReaderIsBack) {
  facade->SAM_connect(1);
  sim("reader out sam");
  EXPECT_FALSE(unlock(key));
  sim("reader in sam");
  facade->SAM_connect(1);
  EXPECT_TRUE(unlock(key));
}

TEST_F(SamByFacade, ReportsADaemonThatIsNotThere) {
  sim("daemon stop");
  EXPECT_EQ(facade->SAM_connect(1), 0);
  EXPECT_FALSE(facade->SAM_isConnected());
  sim("daemon start");
  EXPECT_EQ(facade->SAM_connect(1), 1);
  EXPECT_TRUE(facade->SAM_isConnected());
}

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

TEST_F(SamByFacade, IsUnlockedTwoThousandTimesWithoutMoreDescriptorsOrMemory) {
  facade->SAM_connect(1);
  for (int i = 0; i < 10; ++i) ASSERT_TRUE(unlock(key));
  const std::ptrdiff_t descriptors = openDescriptors();
  const std::size_t memory = mallinfo2().uordblks;
  for (int i = 0; i < 2000; ++i) ASSERT_TRUE(unlock(key)) << i;
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(mallinfo2().uordblks, memory);
}

TEST_F(SamByFacade, IsConnectedAgainAndAgainWithoutMoreDescriptors) {
  facade->SAM_connect(1);
  const std::ptrdiff_t descriptors = openDescriptors();
  facade->SAM_connect(30);
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_TRUE(unlock(key));
}

// ---- by its channel

class SamByChannel : public Sam {
 protected:
  void SetUp() override {
    Sam::SetUp();
    ASSERT_EQ(channel.connect(), SCARD_S_SUCCESS);
    ASSERT_TRUE(channel.isConnected());
  }

  bool part1() { return channel.unlock_part1(rnd2.data(), status); }
  bool part2() { return channel.unlock_part2(key.data(), rnd2.data(), rnd1.data(), reply.data(), status); }
  bool part3() { return channel.unlock_part3(key.data(), reply.data(), rnd2.data(), rnd1.data(), status); }

  SAMChannel channel;
  long status = 0;
  std::array<unsigned char, 12> rnd1{};
  std::array<unsigned char, 12> rnd2{};
  std::array<unsigned char, 24> reply{};
};

TEST_F(SamByChannel, GoesThroughTheStepsOneByOne) {
  EXPECT_TRUE(part1());
  EXPECT_TRUE(part2());
  EXPECT_TRUE(part3());
  EXPECT_EQ(status, 0);
}

TEST_F(SamByChannel, RefusesTheHostsProofUnderAnotherKey) {
  EXPECT_FALSE(channel.unlock(wrongKey.data(), status, wrongKey.size()));
  EXPECT_EQ(status, -3);  // the module answers with a status word alone
}

struct UnlockFault {
  const char* name;
  const char* fault;
  long status;
};

void PrintTo(const UnlockFault& fault, std::ostream* out) { *out << fault.fault; }

class SamUnlockFault : public SamByChannel, public testing::WithParamInterface<UnlockFault> {};

TEST_P(SamUnlockFault, FailsWithItsStatusAndIsGoneInTheNextUnlock) {
  sim(std::string("fault -r sam ") + GetParam().fault);
  EXPECT_FALSE(channel.unlock(key.data(), status, key.size()));
  EXPECT_EQ(status, GetParam().status);
  EXPECT_TRUE(channel.unlock(key.data(), status, key.size()));
  EXPECT_EQ(status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, SamUnlockFault,
    testing::Values(UnlockFault{"LengthInStepOne", "data 13", -2},
                    UnlockFault{"StatusWordInStepOne", "sw 9000", -1},
                    UnlockFault{"NothingButAStatusWordInStepOne", "data 0", -3},
                    UnlockFault{"Mac", "mac", -2},
                    UnlockFault{"StatusWordInStepTwo", "sw 6982 1 after 1", -1},
                    UnlockFault{"NothingButAStatusWordInStepTwo", "data 0 1 after 1", -3},
                    UnlockFault{"StatusWordInStepThree", "sw 90AF 1 after 2", -3},
                    UnlockFault{"NothingButAStatusWordInStepThree", "data 0 1 after 2", 0}),
    [](const auto& test) { return test.param.name; });

class SamTransmitFault : public SamByChannel, public testing::WithParamInterface<int> {};

TEST_P(SamTransmitFault, FailsTheUnlockWithThePcscStatus) {
  sim("fault -r sam transmit 1 after " + std::to_string(GetParam()));
  EXPECT_FALSE(channel.unlock(key.data(), status, key.size()));
  EXPECT_EQ(status, SCARD_E_NOT_TRANSACTED);
}

INSTANTIATE_TEST_SUITE_P(Steps, SamTransmitFault, testing::Range(0, 3));

TEST_F(SamByChannel, IsUnlockedLateWhenItIsDelayed) {
  sim("fault -r sam delay 50 3");
  EXPECT_TRUE(channel.unlock(key.data(), status, key.size()));
}

TEST_F(SamByChannel, FailsWithAPcscStatusWhenItsReaderVanishesAfterStepOne) {
  EXPECT_TRUE(part1());
  sim("reader out sam");
  EXPECT_FALSE(part2());
  EXPECT_NE(status, 0);
}

TEST_F(SamByChannel, FailsWithAPcscStatusWhenItsReaderVanishesAfterStepTwo) {
  EXPECT_TRUE(part1());
  EXPECT_TRUE(part2());
  sim("reader out sam");
  EXPECT_FALSE(part3());
  EXPECT_NE(status, 0);
}

TEST_F(SamByChannel, TellsAVersionRecordThatDoesNotMatch) {
  sim("fault -r sam version");
  std::array<char, 7> serial{};
  EXPECT_FALSE(channel.getVersion(serial.data(), status, 7));
  EXPECT_EQ(status, -1);
  EXPECT_TRUE(channel.getVersion(serial.data(), status, 7));
  EXPECT_EQ(hex(serial), the_serial);
}

TEST_F(SamByChannel, RefusesCardAndKeyCommandsUntilItIsUnlocked) {
  std::array<unsigned char, 16> challenge{};
  std::array<unsigned char, 32> answer{};
  EXPECT_FALSE(channel.authenticatePICC(0x02, 0x00, challenge.data(), answer.data(), challenge.size()));
  EXPECT_TRUE(channel.unlock(key.data(), status, key.size()));
  EXPECT_TRUE(channel.authenticatePICC(0x02, 0x00, challenge.data(), answer.data(), challenge.size()));
}

TEST_F(SamByChannel, DeciphersWithTheOfflineKeyThatWasActivated) {
  channel.unlock(key.data(), status, key.size());
  std::array<char, 7> divInput{};
  std::array<char, 16> data{};
  std::array<char, 16> plain{};
  char length = 0;
  EXPECT_FALSE(channel.decipherOfflineData(data.data(), plain.data(), length, 16));
  EXPECT_TRUE(channel.activateOfflineKey(divInput.data(), 7, 0, 0));
  EXPECT_TRUE(channel.decipherOfflineData(data.data(), plain.data(), length, 16));
  EXPECT_EQ(length, 16);
}

TEST_F(SamByChannel, PreparesTheChangeOfACardsKey) {
  channel.unlock(key.data(), status, key.size());
  std::array<unsigned char, 4> access = {1, 2, 3, 4};
  std::array<unsigned char, 6> out{};
  unsigned char length = 0;
  // The model takes the first two bytes sent, c and b, for the key's number and version.
  EXPECT_TRUE(channel.changeKeyMIFARE(out.data(), length, access.data(), 0x0A, 0x00, 0x02, 0x0D));
  EXPECT_EQ(length, 6);
}

// The card's side of an authentication whose key the model has: deciphers the module's numbers and sends its
// own back.
TEST_F(SamByChannel, AuthenticatesACardInTwoStepsAndSharesASessionKeyWithIt) {
  sim("set -r sam key0200 00000000000000000000000000000000");
  channel.unlock(key.data(), status, key.size());
  Key cardKey = {};
  Key cardNumber = {0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xB7,
                    0xB8, 0xB9, 0xBA, 0xBB, 0xBC, 0xBD, 0xBE, 0xBF};
  Key challenge{};
  Key iv{};
  unsigned long length = 0;
  channel.AES_Cipher(cardKey.data(), cardNumber.data(), 16, challenge.data(), length, iv.data());

  std::array<unsigned char, 32> answer{};
  ASSERT_TRUE(channel.authenticatePICC(0x02, 0x00, challenge.data(), answer.data(), challenge.size()));
  std::array<unsigned char, 32> numbers{};
  iv.fill(0);
  channel.AES_Decipher(cardKey.data(), answer.data(), numbers.data(), length, iv.data(), 32, 32);
  std::rotate(cardNumber.begin(), cardNumber.begin() + 1, cardNumber.end());
  EXPECT_TRUE(std::equal(cardNumber.begin(), cardNumber.end(), numbers.begin() + 16));

  Key samNumber{};
  std::rotate_copy(numbers.begin(), numbers.begin() + 1, numbers.begin() + 16, samNumber.begin());
  Key proof{};
  iv.fill(0);
  channel.AES_Cipher(cardKey.data(), samNumber.data(), 16, proof.data(), length, iv.data());
  EXPECT_TRUE(channel.authenticatePICC(proof.data(), proof.size()));

  Key sessionKey{};
  EXPECT_TRUE(channel.dumpSessionKey(sessionKey.data(), length));
  EXPECT_TRUE(std::equal(numbers.begin(), numbers.begin() + 4, sessionKey.begin()));
  EXPECT_TRUE(channel.generateMAC(proof.data(), proof.size(), nullptr, length));
}

}  // namespace
