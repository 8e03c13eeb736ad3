#include "connected_channel.h"
#include "unlock_vector.h"

#include <mvx2/aes_cmac.h>

namespace {

using mvx2test::Bytes;
using mvx2test::joined;
using mvx2test::UnlockVector;

const UnlockVector& vector() { return UnlockVector::instance(); }

// On a channel without a connection: none is needed.
class SamHostAes : public testing::Test {
 protected:
  void SetUp() override { mvx2test::ScriptedPcsc::instance().reset(); }
  void TearDown() override { EXPECT_TRUE(mvx2test::ScriptedPcsc::instance().calls.empty()); }

  SAMChannel channel;
  Bytes key = vector().key;
  Bytes iv = Bytes(16, 0x00);
  unsigned long outLength = 77;
};

TEST_F(SamHostAes, EnciphersOneBlockWhateverTheLengthAndLeavesItInTheChainingValue) {
  for (const unsigned long length : {0UL, 16UL, 32UL}) {
    Bytes in = vector().derivationInput;
    Bytes out(17, 0xEE);
    iv = Bytes(16, 0x00);
    outLength = 77;
    EXPECT_TRUE(channel.AES_Cipher(key.data(), in.data(), length, out.data(), outLength, iv.data()));
    EXPECT_EQ(out, joined(vector().kxe, {0xEE}));
    EXPECT_EQ(outLength, 16U);
    EXPECT_EQ(iv, vector().kxe);
  }
}

TEST_F(SamHostAes, ChainsTheBlocksItEnciphers) {
  Bytes kxe = vector().kxe;
  Bytes first = vector().rndA;
  Bytes second = vector().rndBRotated;
  Bytes out(32, 0xEE);
  channel.AES_Cipher(kxe.data(), first.data(), 16, out.data(), outLength, iv.data());
  channel.AES_Cipher(kxe.data(), second.data(), 16, out.data() + 16, outLength, iv.data());
  EXPECT_EQ(out, vector().cryptogram);
}

class SamHostAesDecipher : public SamHostAes {
 protected:
  bool decipher(unsigned long inLength, unsigned long outSize) {
    return channel.AES_Decipher(kxe.data(), in.data(), out.data(), outLength, iv.data(), outSize, inLength);
  }

  Bytes kxe = vector().kxe;
  Bytes in = vector().cryptogram;
  Bytes out = Bytes(33, 0xEE);
  const Bytes firstBlock = Bytes(in.begin(), in.begin() + 16);
  const Bytes secondBlock = Bytes(in.begin() + 16, in.end());
};

TEST_F(SamHostAesDecipher, TakesOneBlockForALengthUpTo16) {
  for (const unsigned long length : {0UL, 1UL, 16UL}) {
    out = Bytes(33, 0xEE);
    iv = Bytes(16, 0x00);
    EXPECT_TRUE(decipher(length, 0));
    EXPECT_EQ(out, joined(vector().rndA, Bytes(17, 0xEE))) << length;
    EXPECT_EQ(iv, firstBlock) << length;
  }
}

TEST_F(SamHostAesDecipher, UsesTheChainingValueForOneBlock) {
  iv = Bytes(16, 0xFF);
  EXPECT_TRUE(decipher(16, 16));
  Bytes inverted = vector().rndA;
  for (unsigned char& byte : inverted) byte = static_cast<unsigned char>(~byte);
  EXPECT_EQ(out, joined(inverted, Bytes(17, 0xEE)));
}

TEST_F(SamHostAesDecipher, TakesTwoChainedBlocksForALengthOf32) {
  EXPECT_TRUE(decipher(32, 32));
  EXPECT_EQ(out, joined(joined(vector().rndA, vector().rndBRotated), {0xEE}));
  EXPECT_EQ(iv, secondBlock);
}

TEST_F(SamHostAesDecipher, UsesTheChainingValueForTheFirstOfTwoBlocksOnly) {
  iv = Bytes(16, 0xFF);
  EXPECT_TRUE(decipher(32, 32));
  Bytes inverted = vector().rndA;
  for (unsigned char& byte : inverted) byte = static_cast<unsigned char>(~byte);
  EXPECT_EQ(out, joined(joined(inverted, vector().rndBRotated), {0xEE}));
}

TEST_F(SamHostAesDecipher, TakesTwoBlocksInPlace) {
  EXPECT_TRUE(channel.AES_Decipher(kxe.data(), in.data(), in.data(), outLength, iv.data(), 32, 32));
  EXPECT_EQ(in, joined(vector().rndA, vector().rndBRotated));
}

TEST_F(SamHostAesDecipher, HandsTwoBlocksOverOnlyIntoAnArrayOf32Bytes) {
  for (const unsigned long size : {0UL, 16UL, 31UL, 33UL}) {
    EXPECT_TRUE(decipher(32, size));
    EXPECT_EQ(out, Bytes(33, 0xEE)) << size;
  }
}

TEST_F(SamHostAesDecipher, DoesNothingForAnotherLength) {
  for (const unsigned long length : {17UL, 20UL, 31UL, 33UL, 48UL}) {
    EXPECT_TRUE(decipher(length, 32));
    EXPECT_EQ(out, Bytes(33, 0xEE)) << length;
    EXPECT_EQ(iv, Bytes(16, 0x00)) << length;
  }
}

TEST_F(SamHostAesDecipher, NeverWritesTheLength) {
  for (const unsigned long length : {0UL, 16UL, 20UL, 32UL}) decipher(length, 32);
  EXPECT_EQ(outLength, 77U);
}

// ---- CMAC

TEST_F(SamHostAes, ComputesTheCmacOfSixteenBytesAndItsTruncation) {
  Bytes message = joined(vector().rnd2, Bytes(4, 0x00));
  Bytes k1(16);
  Bytes k2(16);
  Bytes cmac(17, 0xEE);
  Bytes mac(9, 0xEE);
  aes_GenerateSubKey(key.data(), k1.data(), k2.data());
  channel.calculateCMAC(message.data(), key.data(), k1.data(), k2.data(), cmac.data(), mac.data());
  EXPECT_EQ(cmac, joined(vector().hostCmac, {0xEE}));
  EXPECT_EQ(mac, joined(vector().hostMac, {0xEE}));
}

class SamHostCmac : public SamHostAes {
 protected:
  void compute(Bytes data, unsigned char* chainIn) {
    channel.calculateAESCMAC(data.data(), data.size(), key.data(), cmac.data(), mac.data(), chainOut.data(),
                             chainIn);
  }

  Bytes cmac = Bytes(17, 0xEE);
  Bytes mac = Bytes(9, 0xEE);
  Bytes chainOut = Bytes(17, 0xEE);
  const Bytes message = joined(vector().rnd1, Bytes(4, 0x00));
};

TEST_F(SamHostCmac, StartsFromZeroWithoutAChainingValue) {
  compute(message, nullptr);
  EXPECT_EQ(cmac, joined(vector().samCmac, {0xEE}));
  EXPECT_EQ(mac, joined(vector().samMac, {0xEE}));
  EXPECT_EQ(chainOut, joined(vector().samCmac, {0xEE}));
}

TEST_F(SamHostCmac, StartsFromTheChainingValueAndLeavesItAlone) {
  Bytes chainIn(16, 0x3C);
  Bytes same = message;
  for (unsigned char& byte : same) byte = static_cast<unsigned char>(byte ^ 0x3C);
  compute(same, chainIn.data());
  EXPECT_EQ(cmac, joined(vector().samCmac, {0xEE}));
  EXPECT_EQ(mac, joined(vector().samMac, {0xEE}));
  EXPECT_EQ(chainOut, joined(vector().samCmac, {0xEE}));
  EXPECT_EQ(chainIn, Bytes(16, 0x3C));
}

TEST_F(SamHostCmac, ChainsInPlace) {
  chainOut = Bytes(16, 0x3C);
  Bytes same = message;
  for (unsigned char& byte : same) byte = static_cast<unsigned char>(byte ^ 0x3C);
  compute(same, chainOut.data());
  EXPECT_EQ(chainOut, vector().samCmac);
}

TEST_F(SamHostCmac, CountsTheLow8BitsOfTheLength) {
  Bytes longer = joined(message, Bytes(256, 0xAB));
  compute(longer, nullptr);
  EXPECT_EQ(cmac, joined(vector().samCmac, {0xEE}));
}

TEST_F(SamHostCmac, TakesUpTo255Bytes) {
  Bytes first(255, 0xAB);
  compute(first, nullptr);
  const Bytes before = cmac;
  first.back() = 0xAC;
  compute(first, nullptr);
  EXPECT_NE(cmac, before);
}

TEST_F(SamHostCmac, OfNothingIsTheOneOfRfc4493) {
  key = mvx2test::unhex("2B 7E 15 16 28 AE D2 A6 AB F7 15 88 09 CF 4F 3C");
  const Bytes published = mvx2test::unhex("BB 1D 69 29 E9 59 37 28 7F A3 7D 12 9B 75 67 46");
  channel.calculateAESCMAC(nullptr, 0, key.data(), cmac.data(), mac.data(), chainOut.data(), nullptr);
  EXPECT_EQ(cmac, joined(published, {0xEE}));
  EXPECT_EQ(mac, mvx2test::unhex("1D 29 59 28 A3 12 75 46 EE"));
  cmac = Bytes(17, 0xEE);
  compute(Bytes(256, 0xAB), nullptr);
  EXPECT_EQ(cmac, joined(published, {0xEE})) << "256 bytes count as none";
}

}  // namespace
