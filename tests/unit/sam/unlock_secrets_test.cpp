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
using mvx2test::UnlockVector;

constexpr std::size_t stack_size = std::size_t{256} * 1024;

// Copies memory without the checks that sanitizers and valgrind put on a dead stack; empty where that is not
// possible.
Bytes copyOf(const void* memory, std::size_t length) {
  Bytes copy(length);
  const int file = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  const ssize_t got =
      pread(file, copy.data(), length, static_cast<off_t>(reinterpret_cast<std::uintptr_t>(memory)));
  close(file);
  if (got != static_cast<ssize_t>(length)) copy.clear();
  return copy;
}

bool holds(const Bytes& memory, const Bytes& secret) {
  return std::search(memory.begin(), memory.end(), secret.begin(), secret.end()) != memory.end();
}

struct Secret {
  std::string name;
  Bytes bytes;
};

void PrintTo(const Secret& secret, std::ostream* out) { *out << secret.name; }

class SamUnlockMemory : public mvx2test::ConnectedChannel {
 protected:
  void SetUp() override {
    ConnectedChannel::SetUp();
    FixedRandom::instance().reset();
    FixedRandom::instance().give(UnlockVector::instance().rnd1);
    FixedRandom::instance().give(UnlockVector::instance().rndA);
    pcsc.reply(UnlockVector::instance().step1Reply());
    pcsc.reply(UnlockVector::instance().step2Reply());
    pcsc.reply(UnlockVector::step3Reply());
  }

  static void* unlock(void* self) {
    auto* const test = static_cast<SamUnlockMemory*>(self);
    long status = 0;
    test->unlocked = test->channel.unlock(test->key.data(), status, 16);
    return nullptr;
  }

  // Unlocks on a stack of its own and returns what is left on it.
  Bytes stackAfterUnlock() {
    const std::unique_ptr<void, decltype(&std::free)> stack(std::aligned_alloc(4096, stack_size), &std::free);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack.get(), stack_size);
    pthread_t thread{};
    if (pthread_create(&thread, &attributes, unlock, this) == 0) pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return copyOf(stack.get(), stack_size);
  }

  Bytes key = UnlockVector::instance().key;
  bool unlocked = false;
};

class SamUnlockSecret : public SamUnlockMemory, public testing::WithParamInterface<Secret> {};

TEST_P(SamUnlockSecret, IsNotLeftOnTheStack) {
  const Bytes marker(16, 0x4D);
  if (!holds(copyOf(marker.data(), marker.size()), marker)) GTEST_SKIP() << "memory cannot be read back here";
  const Bytes stack = stackAfterUnlock();
  ASSERT_TRUE(unlocked);
  EXPECT_FALSE(holds(stack, GetParam().bytes));
}

TEST_F(SamUnlockMemory, HoldsNoStreamBufferWithRandomNumbers) {
  unlock(this);
  EXPECT_LE(FixedRandom::instance().largestBuffer, 1U);
}

Bytes subkey(bool first) {
  Bytes k1(16);
  Bytes k2(16);
  aes_GenerateSubKey(UnlockVector::instance().key.data(), k1.data(), k2.data());
  return first ? k1 : k2;
}

INSTANTIATE_TEST_SUITE_P(All, SamUnlockSecret,
                         testing::Values(Secret{"Kxe", UnlockVector::instance().kxe},
                                         Secret{"RndA", UnlockVector::instance().rndA},
                                         Secret{"RndB", UnlockVector::instance().rndB},
                                         Secret{"RndBRotated", UnlockVector::instance().rndBRotated},
                                         Secret{"HostCmac", UnlockVector::instance().hostCmac},
                                         Secret{"SamCmac", UnlockVector::instance().samCmac},
                                         Secret{"SubkeyK1", subkey(true)}, Secret{"SubkeyK2", subkey(false)},
                                         Secret{"Key", UnlockVector::instance().key}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
