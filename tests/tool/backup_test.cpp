// Backups: what is in them, what is wrong with them, how they are written.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

namespace {

using mvx2test::holds;
using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::readFile;
using mvx2test::scratch;
using mvx2test::sim;
using mvx2test::writeFile;

std::string file() { return scratch("terminal.json"); }

nlohmann::json backup() { return nlohmann::json::parse(readFile(file())); }

TEST(Backup, HoldsEveryWritableValue) {
  EXPECT_EQ(mvx2("backup " + file()).out, "18 settings and no keys are in " + file() + "\n");
  nlohmann::json writable = nlohmann::json::object();
  const nlohmann::json read = mvx2("get --all --json").json()["values"];
  const nlohmann::json listed = mvx2("values --json").json()["values"];
  for (std::size_t i = 0; i < listed.size(); ++i)
    if (listed[i]["access"] == "read-write")
      writable[listed[i]["name"].get<std::string>()] = read[i]["value"];
  EXPECT_EQ(backup()["settings"], writable);
}

TEST(Backup, IsWhatItsSchemaSays) {
  mvx2("backup --keys " + file());
  EXPECT_EQ(mvx2test::backupComplaint(file()), "");
}

TEST(Backup, SaysInJsonWhatItHolds) {
  const Outcome run = mvx2("backup --json --keys " + file());
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["settings"], 18);
  EXPECT_EQ(run.json()["keys"], 4);
}

TEST(Backup, LeavesKeysOut) {
  mvx2("backup " + file());
  EXPECT_FALSE(backup().contains("keys"));
}

TEST(Backup, HoldsTheKeysWhenAskedAndIsThenReadByItsOwnerAlone) {
  mvx2("backup --keys " + file());
  EXPECT_EQ(backup()["keys"]["madkey"], "A0A1A2A3A4A5");
  struct stat entry {};
  ASSERT_EQ(stat(file().c_str(), &entry), 0);
  EXPECT_EQ(entry.st_mode & 0777U, 0600U);
}

TEST(Backup, HasTheUsualModeWithoutKeys) {
  mvx2test::shell("umask 027; $MVX2 backup " + file());
  struct stat entry {};
  ASSERT_EQ(stat(file().c_str(), &entry), 0);
  EXPECT_EQ(entry.st_mode & 0777U, 0640U);
}

TEST(Backup, ThatFailsLeavesTheOldFileAndNothingElse) {
  const std::string directory = scratch("backups");
  std::filesystem::create_directories(directory);
  writeFile(directory + "/old.json", "old");
  sim("fault transmit 100 after 20");
  EXPECT_EQ(mvx2("backup " + directory + "/old.json").exit, 4);
  EXPECT_EQ(readFile(directory + "/old.json"), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory), {}), 1);
}

TEST(Backup, ThatCannotTakeItsPlaceLeavesNothingBehind) {
  const std::string directory = scratch("parent/directory");
  std::filesystem::create_directories(directory);
  const Outcome run = mvx2("backup " + directory);
  EXPECT_EQ(run.exit, 7);
  EXPECT_EQ(run.err, "mvx2: cannot write " + directory + ": Is a directory\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch("parent")), {}), 1);
}

TEST(Backup, TakesThePlaceOfTheFileThatALinkLeadsTo) {
  writeFile(file(), "old");
  const std::string link = scratch("link.json");
  std::filesystem::create_symlink(file(), link);
  EXPECT_EQ(mvx2("backup " + link).exit, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(backup()["format"], "mvx2-backup");
}

TEST(Backup, NeverTakesThePlaceOfADeviceOrPipe) {
  const std::string pipe = scratch("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const Outcome run = mvx2("backup " + pipe);
  EXPECT_EQ(run.exit, 7);
  EXPECT_EQ(run.err, "mvx2: cannot write " + pipe + ": it is no regular file\n");
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST(Backup, FailsInADirectoryThatIsNone) {
  writeFile(file(), "");
  const Outcome run = mvx2("backup --json " + file() + "/new.json");
  EXPECT_EQ(run.exit, 7);
  EXPECT_EQ(mvx2test::schemaComplaint(run.err), "");
  EXPECT_EQ(run.error()["message"], "cannot write " + file() + "/new.json: Not a directory");
}

TEST(Backup, FailsWhereNobodyMayWrite) { EXPECT_EQ(mvx2("backup /proc/new.json").exit, 7); }

// ---- a file that is no backup: found out before the terminal is touched

struct WrongFile {
  const char* name;
  const char* content;
  const char* complaint;
};

std::ostream& operator<<(std::ostream& stream, const WrongFile& wrong) { return stream << wrong.name; }

class Wrong : public testing::TestWithParam<WrongFile> {};

TEST_P(Wrong, IsToldAndNothingIsSent) {
  writeFile(file(), GetParam().content);
  for (const char* const command : {"diff ", "restore "}) {
    const Outcome run = mvx2(command + file());
    EXPECT_EQ(run.exit, 7);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(holds(run.err, GetParam().complaint)) << run.err;
  }
  EXPECT_EQ(sim("get transmits"), "0");
}

INSTANTIATE_TEST_SUITE_P(
    Each, Wrong,
    testing::Values(
        WrongFile{"Empty", "", "not a backup"}, WrongFile{"NoJson", "hello", "not a backup"},
        WrongFile{"CutOff", R"({"format":"mvx2-backup","schema":1,"settings":{"pts")", "not a backup"},
        WrongFile{"AnotherFormat", R"({"format":"other","schema":1,"settings":{}})", "not a backup"},
        WrongFile{"AList", "[]", "not a backup"},
        WrongFile{"AnotherSchema", R"({"format":"mvx2-backup","schema":2,"settings":{}})", "another version"},
        WrongFile{"NoSettings", R"({"format":"mvx2-backup","schema":1})", "no settings"},
        WrongFile{"UnknownValue", R"({"format":"mvx2-backup","schema":1,"settings":{"x":1}})",
                  "no value is named x"},
        WrongFile{"ReadOnlyValue", R"({"format":"mvx2-backup","schema":1,"settings":{"credit":1}})",
                  "cannot be written"},
        WrongFile{"ValueOutOfRange", R"({"format":"mvx2-backup","schema":1,"settings":{"pts":256}})",
                  "outside its range"},
        WrongFile{"ValueThatIsAText", R"({"format":"mvx2-backup","schema":1,"settings":{"pts":"1"}})",
                  "no number"},
        WrongFile{"ValueWithAFraction", R"({"format":"mvx2-backup","schema":1,"settings":{"pts":1.5}})",
                  "no number"},
        WrongFile{"UnknownKey", R"({"format":"mvx2-backup","schema":1,"settings":{},"keys":{"k":"00"}})",
                  "no key is named k"},
        WrongFile{"KeyThatIsNone",
                  R"({"format":"mvx2-backup","schema":1,"settings":{},"keys":{"madkey":"XY"}})",
                  "not written in hexadecimal"}),
    [](const auto& instance) { return instance.param.name; });

TEST(MissingFile, IsTold) {
  const Outcome run = mvx2("diff /nowhere.json");
  EXPECT_EQ(run.exit, 7);
  EXPECT_EQ(run.err, "mvx2: cannot read /nowhere.json: No such file or directory\n");
}

TEST(DirectoryAsFile, IsTold) { EXPECT_EQ(mvx2("restore /").err, "mvx2: cannot read /: Is a directory\n"); }

// ---- diff

TEST(Diff, FindsNoneInAFreshBackup) {
  mvx2("backup --keys " + file());
  const Outcome run = mvx2("diff " + file());
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, "no difference\n");
  EXPECT_EQ(mvx2("diff --json " + file()).json()["same"], true);
}

TEST(Diff, ShowsWhatDiffers) {
  mvx2("backup " + file());
  mvx2("set account 99");
  mvx2("set issuer 0xBEEF");
  EXPECT_EQ(mvx2("diff " + file()).out,
            "NAME     TERMINAL  BACKUP\n"
            "account  99        4711\n"
            "issuer   0xBEEF    0x1234\n");
}

TEST(Diff, ShowsWhatDiffersInJson) {
  mvx2("backup " + file());
  mvx2("set addval 1");
  const Outcome run = mvx2("diff --json " + file());
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  EXPECT_EQ(run.json()["same"], false);
  EXPECT_EQ(run.json()["differences"],
            nlohmann::json::parse(R"([{"name":"addval","from":true,"to":false}])"));
}

TEST(Diff, ShowsThatAKeyDiffersAndNeitherKey) {
  mvx2("backup --keys " + file());
  sim("set madkey 112233445566");
  const Outcome run = mvx2("diff " + file());
  EXPECT_EQ(run.out,
            "NAME    TERMINAL      BACKUP\n"
            "madkey  ************  ************ (differs)\n");
}

TEST(Diff, IgnoresTheCaseOfAKey) {
  mvx2("backup --keys " + file());
  sim("set madkey a0a1a2a3a4a5");
  EXPECT_EQ(mvx2("diff " + file()).out, "no difference\n");
}

TEST(Diff, LooksOnlyAtWhatTheFileHolds) {
  writeFile(file(), R"({"format":"mvx2-backup","schema":1,"settings":{"pts":11}})");
  EXPECT_EQ(mvx2("diff " + file()).out, "NAME  TERMINAL  BACKUP\npts   10        11\n");
}

}  // namespace
