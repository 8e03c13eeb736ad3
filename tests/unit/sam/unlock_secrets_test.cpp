// What an unlock leaves behind in memory.
#include "connected_channel.h"
#include "fixed_random.h"
#include "unlock_vector.h"

#include "support/stack_traces.h"

#include <mvx2/aes_cmac.h>

#include <algorithm>
#include <ostream>

namespace {

using mvx2test::Bytes;
using mvx2test::FixedRandom;
using mvx2test::holds;
using mvx2test::ScriptedPcsc;
using mvx2test::stackAfter;
using mvx2test::UnlockVector;

// The same bytes as 32-bit words that a little-endian machine holds.
Bytes asWords(Bytes bytes) {
  for (auto word = bytes.begin(); word != bytes.end(); word += 4) std::reverse(word, word + 4);
  return bytes;
}

const UnlockVector& vector() { return UnlockVector::instance(); }

// Each runs a step with the numbers of the vector on a stack of its own, so that no later one covers its
// traces.
bool step2(SAMChannel& channel) {
  Bytes key = vector().key;
  Bytes rnd2 = vector().rnd2;
  Bytes rnd1(12);
  Bytes reply(24);
  long status = 0;
  ScriptedPcsc::instance().reply(vector().step2Reply());
  FixedRandom::instance().give(vector().rnd1);
  return channel.unlock_part2(key.data(), rnd2.data(), rnd1.data(), reply.data(), status);
}

bool step3(SAMChannel& channel) {
  Bytes key = vector().key;
  Bytes rnd2 = vector().rnd2;
  Bytes rnd1 = vector().rnd1;
  Bytes reply = vector().step2Data();
  long status = 0;
  ScriptedPcsc::instance().reply(UnlockVector::step3Reply());
  FixedRandom::instance().give(vector().rndA);
  return channel.unlock_part3(key.data(), reply.data(), rnd2.data(), rnd1.data(), status);
}

struct Secret {
  std::string name;
  bool (*step)(SAMChannel&);
  Bytes bytes;
};

void PrintTo(const Secret& secret, std::ostream* out) { *out << secret.name; }

class SamUnlockMemory : public mvx2test::ConnectedChannel {
 protected:
  void SetUp() override {
    ConnectedChannel::SetUp();
    FixedRandom::instance().reset();
  }
};

class SamUnlockSecret : public SamUnlockMemory, public testing::WithParamInterface<Secret> {};

TEST_P(SamUnlockSecret, IsNotLeftOnTheStack) {
  bool done = false;
  const Bytes stack = stackAfter([&] { done = GetParam().step(channel); });
  ASSERT_TRUE(done);
  EXPECT_FALSE(holds(stack, GetParam().bytes));
  EXPECT_FALSE(holds(stack, asWords(GetParam().bytes)));
}

Bytes subkey(bool first) {
  Bytes k1(16);
  Bytes k2(16);
  aes_GenerateSubKey(vector().key.data(), k1.data(), k2.data());
  return first ? k1 : k2;
}

INSTANTIATE_TEST_SUITE_P(
    All, SamUnlockSecret,
    testing::Values(Secret{"KeyOfStepTwo", step2, vector().key}, Secret{"SubkeyK1", step2, subkey(true)},
                    Secret{"SubkeyK2", step2, subkey(false)}, Secret{"HostCmac", step2, vector().hostCmac},
                    Secret{"SamCmac", step2, vector().samCmac}, Secret{"KeyOfStepThree", step3, vector().key},
                    Secret{"Kxe", step3, vector().kxe}, Secret{"RndA", step3, vector().rndA},
                    Secret{"RndB", step3, vector().rndB}, Secret{"RndBRotated", step3, vector().rndBRotated}),
    [](const auto& test) { return test.param.name; });

TEST_F(SamUnlockMemory, HoldsNoStreamBufferWithRandomNumbers) {
  EXPECT_TRUE(step3(channel));
  EXPECT_LE(FixedRandom::instance().largestBuffer, 1U);
}

}  // namespace
