// What an unlock leaves behind in memory.
#include "connected_channel.h"
#include "fixed_random.h"
#include "unlock_vector.h"

#include <mvx2/aes_cmac.h>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <ostream>

namespace {

using mvx2test::Bytes;
using mvx2test::FixedRandom;
using mvx2test::ScriptedPcsc;
using mvx2test::UnlockVector;

constexpr std::size_t stack_size = std::size_t{256} * 1024;

Bytes readThroughKernel(const void* memory, std::size_t length) {
  Bytes copy(length);
  const int file = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  const ssize_t got =
      pread(file, copy.data(), length, static_cast<off_t>(reinterpret_cast<std::uintptr_t>(memory)));
  close(file);
  if (got != static_cast<ssize_t>(length)) copy.clear();
  return copy;
}

// Copies memory past the checks that sanitizers and valgrind put on a dead stack. An emulator has its
// addresses elsewhere and no such checks.
Bytes copyOf(const void* memory, std::size_t length) {
  const Bytes marker(16, 0x4D);
  if (readThroughKernel(marker.data(), marker.size()) == marker) return readThroughKernel(memory, length);
  const auto* const bytes = static_cast<const unsigned char*>(memory);
  return {bytes, bytes + length};
}

bool holds(const Bytes& memory, const Bytes& secret) {
  return std::search(memory.begin(), memory.end(), secret.begin(), secret.end()) != memory.end();
}

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

class SamUnlockSecret : public SamUnlockMemory, public testing::WithParamInterface<Secret> {
 protected:
  static void* run(void* self) {
    auto* const test = static_cast<SamUnlockSecret*>(self);
    test->done = GetParam().step(test->channel);
    return nullptr;
  }

  // What the step leaves on the stack of its thread.
  Bytes stackAfterStep() {
    const std::unique_ptr<void, decltype(&std::free)> stack(std::aligned_alloc(4096, stack_size), &std::free);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack.get(), stack_size);
    pthread_t thread{};
    if (pthread_create(&thread, &attributes, run, this) == 0) pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return copyOf(stack.get(), stack_size);
  }

  bool done = false;
};

TEST_P(SamUnlockSecret, IsNotLeftOnTheStack) {
  const Bytes stack = stackAfterStep();
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
