#include "secrets.h"
#include "errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <utility>

namespace {

using mvx2tool::Exit;
using mvx2tool::Failure;
using mvx2tool::readSecret;
using mvx2tool::Secret;

const std::string key = "112233445566";  // short enough to lie inside its object

template <std::size_t size>
bool holdsKey(const unsigned char (&bytes)[size]) {
  return std::search(bytes, bytes + size, key.begin(), key.end()) != bytes + size;
}

class SecretPlace : public testing::Test {
 protected:
  alignas(Secret) unsigned char m_place[sizeof(Secret)] = {};
};

TEST_F(SecretPlace, HoldsTheSecretWhileItLives) {
  const Secret* const secret = new (m_place) Secret{std::string(key)};
  EXPECT_TRUE(holdsKey(m_place));
  secret->~Secret();
}

TEST_F(SecretPlace, IsOverwrittenWhenTheSecretGoes) {
  const Secret* const secret = new (m_place) Secret{std::string(key)};
  secret->~Secret();
  EXPECT_FALSE(holdsKey(m_place));
}

TEST_F(SecretPlace, IsOverwrittenWhenAMovedSecretGoes) {
  auto* const secret = new (m_place) Secret{std::string(key)};
  {
    const Secret taken(std::move(*secret));
    EXPECT_EQ(taken.text(), key);
  }
  secret->~Secret();
  EXPECT_FALSE(holdsKey(m_place));
}

TEST(Secret, IsMaskedWithItsLength) { EXPECT_EQ(Secret{std::string(key)}.masked(), "************"); }

class SecretFile : public testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove(m_file); }

  Secret read(const std::string& content) const {
    std::ofstream(m_file) << content;
    return readSecret(m_file);
  }
  Exit failure(const std::string& content) const {
    try {
      read(content);
    } catch (const Failure& failure) {
      EXPECT_EQ(std::string(failure.what()).find(content.empty() ? "?" : content), std::string::npos);
      return failure.problem().exit;
    }
    return Exit::done;
  }

  std::string m_file = testing::TempDir() + "mvx2-secret";
};

TEST_F(SecretFile, GivesItsLineWithoutBlanksAroundIt) { EXPECT_EQ(read(" 112233445566\r\n").text(), key); }

TEST_F(SecretFile, FailsWhenItHoldsNothing) { EXPECT_EQ(failure("\n \n"), Exit::file); }

TEST_F(SecretFile, FailsWhenItHoldsMoreThanOneLine) { EXPECT_EQ(failure("1122\n3344"), Exit::file); }

TEST_F(SecretFile, FailsWhenItHoldsABlank) { EXPECT_EQ(failure("1122 3344"), Exit::file); }

TEST_F(SecretFile, FailsWhenItIsTooLong) { EXPECT_EQ(failure(std::string(257, 'A')), Exit::file); }

TEST_F(SecretFile, FailsWhenItIsMissing) { EXPECT_THROW(readSecret(m_file + "/missing"), Failure); }

}  // namespace
