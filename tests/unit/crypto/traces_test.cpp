// What the message codes leave behind in memory: nothing of a key's schedule, nothing of a subkey.
#include "support/stack_traces.h"

#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>
#include <mvx2/des.h>
#include <mvx2/des_mac.h>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

const Bytes key = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                   0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
const std::array<unsigned char, 40> message{};

struct Trace {
  std::string name;
  std::function<void()> work;
  Bytes secret;
};

void PrintTo(const Trace& trace, std::ostream* out) { *out << trace.name; }

Bytes bytesOf(const uint32_t* words, std::size_t count) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(words);
  return {bytes, bytes + 4 * count};
}

Bytes lastAesRoundKey() {
  std::array<uint32_t, 44> w{};
  aes_KeyExpansion(0, key.data(), w.data(), 4);
  return bytesOf(w.data() + 40, 4);
}

Bytes desRoundKeys() {
  des_context context{};
  des_setkey_enc(&context, key.data());
  return bytesOf(context.sk + 8, 4);
}

Bytes tdeaRoundKeys() {
  des3_context context{};
  des3_set2key_enc(&context, key.data());
  return bytesOf(context.sk + 40, 4);
}

Bytes tdeaSubkey(bool first) {
  std::array<unsigned char, 8> K1{};
  std::array<unsigned char, 8> K2{};
  des3_cmac_subkey_generation(key.data(), 16, K1.data(), K2.data());
  const auto& subkey = first ? K1 : K2;
  return {subkey.begin(), subkey.end()};
}

void generateAesSubkeys() {
  std::array<unsigned char, 16> K1{};
  std::array<unsigned char, 16> K2{};
  aes_GenerateSubKey(key.data(), K1.data(), K2.data());
}

void buildAesCmac() {
  const std::array<unsigned char, 16> subkey{};
  std::array<unsigned char, 16> mac{};
  std::array<unsigned char, 16> iv{};
  aes_buildCmac(key.data(), subkey.data(), subkey.data(), message.data(), message.size(), mac.data(),
                iv.data());
}

template <unsigned int keyLength>
void computeDesMac() {
  std::array<unsigned char, 4> mac{};
  std::array<unsigned char, 8> iv{};
  des_ComputeMac(message.data(), message.size(), key.data(), keyLength, mac.data(), 0, iv.data());
}

template <unsigned int keyLength>
void generateTdeaSubkeys() {
  std::array<unsigned char, 8> K1{};
  std::array<unsigned char, 8> K2{};
  des3_cmac_subkey_generation(key.data(), keyLength, K1.data(), K2.data());
}

void computeTdeaCmac() {
  std::array<unsigned char, 8> mac{};
  std::array<unsigned char, 8> iv{};
  des3_computeCmac(message.data(), 39, key.data(), 16, mac.data(), 0, iv.data());
}

class KeyMaterial : public testing::TestWithParam<Trace> {};

TEST_P(KeyMaterial, IsNotLeftOnTheStack) {
  EXPECT_FALSE(mvx2test::holds(mvx2test::stackAfter(GetParam().work), GetParam().secret));
}

INSTANTIATE_TEST_SUITE_P(
    All, KeyMaterial,
    testing::Values(Trace{"ScheduleOfAesSubkeys", generateAesSubkeys, lastAesRoundKey()},
                    Trace{"ScheduleOfAesCmac", buildAesCmac, lastAesRoundKey()},
                    Trace{"ScheduleOfDesMac", computeDesMac<8>, desRoundKeys()},
                    Trace{"ScheduleOfTdeaMac", computeDesMac<16>, tdeaRoundKeys()},
                    Trace{"ScheduleOfDesSubkeys", generateTdeaSubkeys<8>, desRoundKeys()},
                    Trace{"ScheduleOfTdeaSubkeys", generateTdeaSubkeys<16>, tdeaRoundKeys()},
                    Trace{"ScheduleOfTdeaCmac", computeTdeaCmac, tdeaRoundKeys()},
                    Trace{"SubkeyK1OfTdeaCmac", computeTdeaCmac, tdeaSubkey(true)},
                    Trace{"SubkeyK2OfTdeaCmac", computeTdeaCmac, tdeaSubkey(false)}),
    [](const auto& test) { return test.param.name; });

}  // namespace
