#include "crypto/secure.h"

#include <gtest/gtest.h>

#include <array>

using mvx2::equalConstantTime;
using mvx2::wipe;
using mvx2::Wiper;

namespace {

using Secret = std::array<unsigned char, 32>;

TEST(EqualConstantTime, IsTrueForEqualBytesOnly) {
  Secret a;
  a.fill(0x5a);
  Secret b = a;
  EXPECT_TRUE(equalConstantTime(a.data(), b.data(), a.size()));
  for (std::size_t i = 0; i < b.size(); ++i) {
    for (unsigned int bit = 0; bit < 8; ++bit) {
      b[i] = static_cast<unsigned char>(a[i] ^ (1U << bit));
      EXPECT_FALSE(equalConstantTime(a.data(), b.data(), a.size())) << i << ", " << bit;
    }
    b[i] = a[i];
  }
}

TEST(EqualConstantTime, SeesDifferencesThatCancelOneAnother) {
  const Secret a = {1, 2, 3};
  const Secret b = {2, 1, 3};
  EXPECT_FALSE(equalConstantTime(a.data(), b.data(), a.size()));
}

TEST(EqualConstantTime, LooksAtTheGivenLengthAlone) {
  Secret a = {1, 2, 3};
  Secret b = {1, 2, 4};
  EXPECT_TRUE(equalConstantTime(a.data(), b.data(), 2));
  EXPECT_TRUE(equalConstantTime(a.data(), b.data(), 0));
}

TEST(Wipe, ClearsExactlyTheGivenBytes) {
  Secret secret;
  secret.fill(0x5a);
  wipe(secret.data() + 1, 30);
  EXPECT_EQ(secret[0], 0x5a);
  EXPECT_EQ(secret[31], 0x5a);
  for (std::size_t i = 1; i < 31; ++i) EXPECT_EQ(secret[i], 0);
}

TEST(Wiper, ClearsItsObjectAtTheEndOfTheScope) {
  Secret secret;
  secret.fill(0x5a);
  {
    const Wiper wiper(secret);
    EXPECT_EQ(secret[0], 0x5a);
  }
  EXPECT_EQ(secret, Secret{});
}

// An object on memory that outlives it, so that the bytes can be looked at after its end. The optimiser may
// drop the last stores to an object that nothing can read any more; it must not drop these.
TEST(Wiper, ClearsAnObjectWhoseLifeEnds) {
  alignas(Secret) std::array<unsigned char, sizeof(Secret)> memory;
  {
    auto* secret = new (memory.data()) Secret;
    secret->fill(0x5a);
    asm volatile("" : : "r"(secret) : "memory");
    const Wiper wiper(*secret);
  }
  asm volatile("" : : "r"(memory.data()) : "memory");
  for (const unsigned char byte : memory) EXPECT_EQ(byte, 0);
}

}  // namespace
