// The host's side in these tests is worked out with OpenSSL, the module's with another library: neither can
// hide a slip of the other.
#include "Reader.h"

#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <algorithm>
#include <string>

using mvx2sim::Bytes;
using mvx2sim::makeSamReader;
using mvx2sim::Reader;

namespace {

const Bytes unlock_key = {0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7,
                          0xC8, 0xC9, 0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF};
const Bytes serial = {0x04, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6};
const Bytes card_key = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE,
                        0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

Bytes part(const Bytes& bytes, std::size_t from, std::size_t size) {
  return {bytes.data() + from, bytes.data() + from + size};
}

Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Bytes counting(std::size_t size, unsigned char from) {
  Bytes bytes(size);
  for (unsigned char& byte : bytes) byte = from++;
  return bytes;
}

Bytes rotated(Bytes bytes, std::ptrdiff_t count) {
  std::rotate(bytes.begin(), bytes.begin() + count, bytes.end());
  return bytes;
}

Bytes cbc(const Bytes& key, const Bytes& in, bool encrypt) {
  const Bytes iv(16);
  Bytes out(in.size() + 16);
  int length = 0;
  EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
  EVP_CipherInit_ex(context, EVP_aes_128_cbc(), nullptr, key.data(), iv.data(), encrypt ? 1 : 0);
  EVP_CIPHER_CTX_set_padding(context, 0);
  EVP_CipherUpdate(context, out.data(), &length, in.data(), static_cast<int>(in.size()));
  EVP_CIPHER_CTX_free(context);
  out.resize(static_cast<std::size_t>(length));
  return out;
}

Bytes cmac(const Bytes& key, const Bytes& message) {
  Bytes mac(16);
  std::size_t length = 0;
  EVP_Q_mac(nullptr, "CMAC", nullptr, "AES-128-CBC", nullptr, key.data(), key.size(), message.data(),
            message.size(), mac.data(), mac.size(), &length);
  return mac;
}

Bytes oddBytes(const Bytes& mac) {
  return {mac[1], mac[3], mac[5], mac[7], mac[9], mac[11], mac[13], mac[15]};
}

Bytes command(unsigned char ins, unsigned char p1, const Bytes& data, bool le = true) {
  Bytes apdu = {0x80, ins, p1, 0x00};
  if (!data.empty()) apdu = apdu + Bytes{static_cast<unsigned char>(data.size())} + data;
  return le ? apdu + Bytes{0x00} : apdu;
}

Bytes statusOf(const Bytes& reply) { return part(reply, reply.size() - 2, 2); }

const Bytes done = {0x90, 0x00};
const Bytes more = {0x90, 0xAF};
const Bytes refused = {0x69, 0x82};
const Bytes out_of_order = {0x69, 0x85};
const Bytes wrong_length = {0x67, 0x00};
const Bytes no_such_key = {0x6A, 0x88};

class Sam : public testing::Test {
 protected:
  Bytes send(const Bytes& apdu) { return reader->transmit(apdu).reply; }

  // The three steps of the host authentication, each with the host's side of it.
  Bytes step1() {
    Bytes reply = send({0x80, 0x10, 0x00, 0x00, 0x02, 0x01, 0x00, 0x00});
    if (reply.size() == 14) rnd2 = part(reply, 0, 12);
    return reply;
  }
  Bytes step2(const Bytes& key) {
    const Bytes mac = oddBytes(cmac(key, rnd2 + Bytes(4)));
    Bytes reply = send(command(0x10, 0x00, mac + rnd1));
    if (reply.size() != 26) return reply;
    Bytes input = part(rnd1, 7, 5) + part(rnd2, 7, 5);
    for (std::size_t i = 0; i < 5; ++i) input.push_back(static_cast<unsigned char>(rnd1[i] ^ rnd2[i]));
    input.push_back(0x91);
    kxe = cbc(key, input, true);
    rndB = cbc(kxe, part(reply, 8, 16), false);
    return reply;
  }
  Bytes step3() { return send(command(0x10, 0x00, cbc(kxe, rndA + rotated(rndB, 2), true))); }

  void unlock() {
    step1();
    step2(unlock_key);
    ASSERT_EQ(statusOf(step3()), done);
  }

  // A card that shares the key authenticates; the session key is left in `session`.
  void authenticateCard(unsigned char p1, const Bytes& key, const Bytes& uid) {
    const Bytes b = counting(16, 0x60);
    const Bytes reply = send(command(0x0A, p1, Bytes{0x07, 0x00} + cbc(key, b, true) + uid));
    ASSERT_EQ(reply.size(), 34U);
    ASSERT_EQ(statusOf(reply), more);
    const Bytes numbers = cbc(key, part(reply, 0, 32), false);
    ASSERT_EQ(part(numbers, 16, 16), rotated(b, 1));
    const Bytes a = part(numbers, 0, 16);
    ASSERT_EQ(send(command(0x0A, 0x00, cbc(key, rotated(a, 1), true), false)), done);
    session = part(a, 0, 4) + part(b, 0, 4) + part(a, 12, 4) + part(b, 12, 4);
  }

  void addCardKey() { ASSERT_EQ(reader->control("set key0700 1032547698BADCFE0123456789ABCDEF"), "OK"); }

  std::unique_ptr<Reader> reader = makeSamReader({unlock_key, serial});
  Bytes rnd1 = counting(12, 0x00);
  Bytes rnd2 = Bytes(12);
  Bytes rndA = counting(16, 0x40);
  Bytes rndB = Bytes(16);
  Bytes kxe = Bytes(16);
  Bytes session;
};

}  // namespace

TEST_F(Sam, ShowsAVersionRecordThatAHostAccepts) {
  const Bytes reply = send({0x80, 0x60, 0x00, 0x00, 0x00});
  ASSERT_EQ(reply.size(), 31U);
  for (const std::size_t record : {0U, 7U}) {
    EXPECT_EQ(part(reply, record, 3), (Bytes{0x04, 0x01, 0x01}));
    EXPECT_GT(reply[record + 3], 0x02);
    EXPECT_GT(reply[record + 4], 0x01);
  }
  EXPECT_EQ(part(reply, 14, 7), serial);
  EXPECT_EQ(statusOf(reply), done);
}

TEST_F(Sam, ShowsTheVersionRecordThatItIsGiven) {
  ASSERT_EQ(reader->control("set version 0001020304050607080910111213"), "OK");
  ASSERT_EQ(reader->control("set serial 11121314151617"), "OK");
  EXPECT_EQ(part(send({0x80, 0x60, 0x00, 0x00, 0x00}), 0, 21),
            (Bytes{0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x10,
                   0x11, 0x12, 0x13, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17}));
}

TEST_F(Sam, IsUnlockedByAHostThatHasTheKey) {
  EXPECT_EQ(statusOf(step1()), more);
  EXPECT_EQ(statusOf(step2(unlock_key)), more);
  EXPECT_EQ(reader->control("get unlocked"), "0");
  EXPECT_EQ(statusOf(step3()), done);
  EXPECT_EQ(reader->control("get unlocked"), "1");
}

TEST_F(Sam, ProvesItselfOverTheHostsNumber) {
  step1();
  EXPECT_EQ(part(step2(unlock_key), 0, 8), oddBytes(cmac(unlock_key, rnd1 + Bytes(4))));
}

TEST_F(Sam, ShowsTheDerivedKeyOverTheHostsLastNumber) {
  step1();
  step2(unlock_key);
  EXPECT_EQ(step3(), cbc(kxe, rotated(rndA, 2), true) + done);
}

TEST_F(Sam, RefusesAHostWithAnotherKey) {
  step1();
  EXPECT_EQ(step2(card_key), refused);
  EXPECT_EQ(reader->control("get unlocked"), "0");
}

TEST_F(Sam, RefusesALastStepWithoutTheRotatedNumber) {
  step1();
  step2(unlock_key);
  rndB = rotated(rndB, 1);
  EXPECT_EQ(step3(), refused);
  EXPECT_EQ(reader->control("get unlocked"), "0");
}

TEST_F(Sam, RefusesStepsOfAnotherLength) {
  EXPECT_EQ(send(command(0x10, 0x00, {0x01})), wrong_length);
  step1();
  EXPECT_EQ(send(command(0x10, 0x00, Bytes(19))), wrong_length);
  step1();
  step2(unlock_key);
  EXPECT_EQ(send(command(0x10, 0x00, Bytes(16))), wrong_length);
}

TEST_F(Sam, RefusesToUnlockWithAnotherKeyEntry) {
  EXPECT_EQ(send(command(0x10, 0x00, {0x02, 0x00})), no_such_key);
  EXPECT_EQ(send(command(0x10, 0x00, {0x01, 0x01})), no_such_key);
}

TEST_F(Sam, StartsAgainAfterAFailedStep) {
  step1();
  step2(card_key);
  EXPECT_EQ(statusOf(step1()), more);
  EXPECT_EQ(statusOf(step2(unlock_key)), more);
}

TEST_F(Sam, StartsAgainAfterAHostThatGaveUp) {
  step1();
  step2(unlock_key);
  unlock();
  EXPECT_EQ(reader->control("get unlocked"), "1");
}

TEST_F(Sam, ForgetsTheStepsWhenAnotherCommandComesBetween) {
  step1();
  send({0x80, 0x60, 0x00, 0x00, 0x00});
  EXPECT_EQ(step2(unlock_key), wrong_length);
}

TEST_F(Sam, ChoosesOtherNumbersEachTime) {
  step1();
  const Bytes first = rnd2;
  step1();
  EXPECT_NE(rnd2, first);
}

TEST_F(Sam, TakesTheUnlockKeyThatItIsGiven) {
  ASSERT_EQ(reader->control("set key 1032547698BADCFE0123456789ABCDEF"), "OK");
  step1();
  EXPECT_EQ(statusOf(step2(card_key)), more);
}

TEST_F(Sam, RefusesCardAndKeyCommandsUntilItIsUnlocked) {
  for (const Bytes& apdu :
       {command(0x0A, 0x00, Bytes(18)), command(0x0A, 0x11, Bytes(25)), command(0xC5, 0x02, Bytes(8)),
        command(0x0D, 0x00, Bytes(16)), command(0x01, 0x01, Bytes(7), false), command(0xD5, 0x00, {}),
        command(0x7C, 0x00, Bytes(5))})
    EXPECT_EQ(send(apdu), refused);
}

TEST_F(Sam, IsLockedAgainWithoutPower) {
  unlock();
  reader->powerOff();
  EXPECT_EQ(send(command(0xD5, 0x00, {})), refused);
}

TEST_F(Sam, IsLockedAgainWhenAnotherUnlockBegins) {
  unlock();
  step1();
  EXPECT_EQ(send(command(0xD5, 0x00, {})), refused);
}

TEST_F(Sam, AuthenticatesACardAndDumpsTheSessionKey) {
  unlock();
  addCardKey();
  authenticateCard(0x00, card_key, {});
  EXPECT_EQ(send(command(0xD5, 0x00, {})), session + done);
}

TEST_F(Sam, AuthenticatesACardWithADiversifiedKey) {
  unlock();
  addCardKey();
  const Bytes uid = counting(7, 0x04);
  authenticateCard(0x11, cmac(card_key, Bytes{0x01} + uid), uid);
  EXPECT_EQ(send(command(0xD5, 0x00, {})), session + done);
}

TEST_F(Sam, RefusesACardThatAnswersWithAnotherKey) {
  unlock();
  addCardKey();
  send(command(0x0A, 0x00, Bytes{0x07, 0x00} + Bytes(16)));
  EXPECT_EQ(send(command(0x0A, 0x00, Bytes(16), false)), refused);
  EXPECT_EQ(send(command(0xD5, 0x00, {})), out_of_order);
}

TEST_F(Sam, RefusesTheSecondStepOfACardWithoutTheFirst) {
  unlock();
  EXPECT_EQ(send(command(0x0A, 0x00, Bytes(16), false)), out_of_order);
}

TEST_F(Sam, RefusesACardKeyThatItDoesNotHold) {
  unlock();
  EXPECT_EQ(send(command(0x0A, 0x00, Bytes{0x77, 0x00} + Bytes(16))), no_such_key);
}

TEST_F(Sam, ComputesTheMacOfASession) {
  unlock();
  addCardKey();
  EXPECT_EQ(send(command(0x7C, 0x00, counting(21, 0x30))), out_of_order);
  authenticateCard(0x00, card_key, {});
  EXPECT_EQ(send(command(0x7C, 0x00, counting(21, 0x30))),
            oddBytes(cmac(session, counting(21, 0x30))) + done);
}

TEST_F(Sam, DeciphersWithTheOfflineKeyThatWasActivated) {
  unlock();
  ASSERT_EQ(reader->control("set key1005 1032547698BADCFE0123456789ABCDEF"), "OK");
  EXPECT_EQ(send(command(0x0D, 0x00, Bytes(16))), out_of_order);
  EXPECT_EQ(send(command(0x01, 0x01, Bytes{0x10, 0x05} + counting(5, 0x21), false)), done);
  const Bytes key = cmac(card_key, Bytes{0x01} + counting(5, 0x21));
  EXPECT_EQ(send(command(0x0D, 0x00, cbc(key, counting(16, 0x50), true))), counting(16, 0x50) + done);
}

TEST_F(Sam, ActivatesNoOtherKeyForOfflineUse) {
  unlock();
  EXPECT_EQ(send(command(0x01, 0x01, Bytes{0x10, 0x77} + Bytes(5), false)), no_such_key);
  EXPECT_EQ(send(command(0x01, 0x01, Bytes{0x02, 0x00} + Bytes(5), false)), no_such_key);
  EXPECT_EQ(send(command(0x01, 0x01, Bytes{0x10, 0x00} + Bytes(6), false)), wrong_length);
}

TEST_F(Sam, AnswersAChangeOfAKeyWithSixBytes) {
  unlock();
  addCardKey();
  const Bytes data = {0x07, 0x00, 0x0D, 0x01, 0x02, 0x03, 0x04, 0x0A};
  EXPECT_EQ(send(command(0xC5, 0x02, data)), part(cmac(card_key, data), 0, 6) + done);
}

TEST_F(Sam, RefusesWhatIsNoCommandOfIts) {
  EXPECT_EQ(send({0x00, 0x60, 0x00, 0x00, 0x00}), (Bytes{0x6E, 0x00}));
  EXPECT_EQ(send({0x80, 0xFF, 0x00, 0x00, 0x00}), (Bytes{0x6D, 0x00}));
  EXPECT_EQ(send({0x80, 0x60, 0x00, 0x01, 0x00}), (Bytes{0x6B, 0x00}));
  EXPECT_EQ(send({0x80, 0x60, 0x01, 0x00, 0x00}), (Bytes{0x6B, 0x00}));
}

TEST_F(Sam, RefusesBytesThatAreNoApdu) {
  for (const Bytes& bytes :
       {Bytes{}, Bytes{0x80, 0x60, 0x00}, Bytes{0x80, 0x10, 0x00, 0x00, 0x03, 0x01},
        Bytes{0x80, 0x10, 0x00, 0x00, 0x00, 0x01}, Bytes{0x80, 0x10, 0x00, 0x00, 0xFF, 0x01, 0x00}})
    EXPECT_EQ(send(bytes), wrong_length);
}

TEST_F(Sam, ShowsAWrongVersionRecordByFault) {
  ASSERT_EQ(reader->control("fault version"), "OK");
  step1();
  EXPECT_EQ(send({0x80, 0x60, 0x00, 0x00, 0x00})[3], 0x00);
  EXPECT_EQ(send({0x80, 0x60, 0x00, 0x00, 0x00})[3], 0x03);
}

TEST_F(Sam, ProvesItselfWronglyByFault) {
  ASSERT_EQ(reader->control("fault mac"), "OK");
  step1();
  Bytes proof = oddBytes(cmac(unlock_key, rnd1 + Bytes(4)));
  proof[0] ^= 0xFFU;
  EXPECT_EQ(part(step2(unlock_key), 0, 8), proof);
}

TEST_F(Sam, ShowsItsKeysAndTakesNoneOfAnotherSize) {
  EXPECT_EQ(reader->control("get key"), "C0C1C2C3C4C5C6C7C8C9CACBCCCDCECF");
  EXPECT_EQ(reader->control("get serial"), "04A1A2A3A4A5A6");
  for (const char* line : {"set key 00", "set serial 00", "set version 00", "set unlocked 1", "set key00 00",
                           "get key0777", "get keyXXXX", "get nothing"})
    EXPECT_EQ(reader->control(line).substr(0, 4), "ERR ") << line;
}
