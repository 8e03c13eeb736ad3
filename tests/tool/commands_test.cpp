// What each command prints when all goes well.
#include "run_tool.h"
#include "support/simulator.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

using mvx2test::mvx2;
using mvx2test::Outcome;
using mvx2test::sim;

struct Case {
  const char* name;
  const char* arguments;
  const char* text;
  const char* json;  // without schema and command
};

std::ostream& operator<<(std::ostream& stream, const Case& c) { return stream << c.arguments; }

class Command : public testing::TestWithParam<Case> {};

TEST_P(Command, PrintsItsResult) {
  const Outcome run = mvx2(GetParam().arguments);
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, GetParam().text);
  EXPECT_EQ(run.err, "");
}

TEST_P(Command, PrintsItsResultAsOneJsonObject) {
  const Outcome run = mvx2(std::string(GetParam().arguments) + " --json");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(mvx2test::schemaComplaint(run.out), "");
  nlohmann::json fields = run.json();
  fields.erase("schema");
  fields.erase("command");
  EXPECT_EQ(fields, nlohmann::json::parse(GetParam().json));
}

std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Values, Command,
    testing::Values(Case{"GetOne", "get credit", "credit  1250\n",
                         R"({"values":[{"name":"credit","value":1250,"text":"1250"}]})"},
                    Case{"GetSeveralInTheirOrder", "get issuer credit", "issuer  0x1234\ncredit  1250\n",
                         R"({"values":[{"name":"issuer","value":4660,"text":"0x1234"},)"
                         R"({"name":"credit","value":1250,"text":"1250"}]})"},
                    Case{"GetFlag", "get switch", "switch  1\n",
                         R"({"values":[{"name":"switch","value":true,"text":"1"}]})"},
                    Case{"GetList", "get listpurses", "listpurses  1 2 5\n",
                         R"({"values":[{"name":"listpurses","value":[1,2,5],"text":"1 2 5"}]})"},
                    Case{"SetDecimal", "set pincode 4321",
                         "pincode is now 4321 (the terminal answered \"4321\")\n",
                         R"({"name":"pincode","value":4321,"text":"4321","answer":"4321"})"},
                    Case{"SetHexadecimal", "set issuer 0xbeef",
                         "issuer is now 0xBEEF (the terminal answered \"48879\")\n",
                         R"({"name":"issuer","value":48879,"text":"0xBEEF","answer":"48879"})"},
                    Case{"SetNegative", "set value -5", "value is now -5 (the terminal answered \"-5\")\n",
                         R"({"name":"value","value":-5,"text":"-5","answer":"-5"})"},
                    Case{"SetFlag", "set addval 1", "addval is now 1 (the terminal answered \"1\")\n",
                         R"({"name":"addval","value":true,"text":"1","answer":"1"})"},
                    Case{"SectorsGet", "sectors get", "sectors  0x0006\n",
                         R"({"values":[{"name":"sectors","value":6,"text":"0x0006"}]})"},
                    Case{"SectorsSet", "sectors set 0x1E",
                         "sectors is now 0x001E (the terminal answered \"30\")\n",
                         R"({"name":"sectors","value":30,"text":"0x001E","answer":"30"})"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Card, Command,
    testing::Values(Case{"Read", "card read", "read is done (the terminal answered \"1\")\n",
                         R"({"action":"read","answer":"1"})"},
                    Case{"FRead", "card fread", "fread is done (the terminal answered \"1\")\n",
                         R"({"action":"fread","answer":"1"})"},
                    Case{"Write", "card write", "write is done (the terminal answered \"1\")\n",
                         R"({"action":"write","answer":"1"})"},
                    Case{"PersoRead", "card persoread", "persoread is done (the terminal answered \"1\")\n",
                         R"({"action":"persoread","answer":"1"})"},
                    Case{"PersoCreate", "card persocreate",
                         "persocreate is done (the terminal answered \"1\")\n",
                         R"({"action":"persocreate","answer":"1"})"},
                    Case{"PurseList", "purse list", "1\n2\n5\n", R"({"numbers":[1,2,5]})"},
                    Case{"PurseSet", "purse set 2", "purse is now 2 (the terminal answered \"2\")\n",
                         R"({"purse":2,"answer":"2"})"},
                    Case{"PurseChange", "purse change 5", "purse is now 5 (the terminal answered \"5\")\n",
                         R"({"purse":5,"answer":"5"})"},
                    Case{"PurseDelete", "purse delete 2",
                         "purse 2 is deleted (the terminal answered \"2\")\n", R"({"purse":2,"answer":"2"})"},
                    Case{"GroupList", "group list", "1\n4\n", R"({"numbers":[1,4]})"},
                    Case{"GroupAdd", "group add", "group 2 is added (the terminal answered \"2\")\n",
                         R"({"group":2,"answer":"2"})"},
                    Case{"GroupDelete", "group delete 4",
                         "group 4 is deleted (the terminal answered \"4\")\n",
                         R"({"group":4,"answer":"4"})"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Terminal, Command,
    testing::Values(
        Case{"Beep", "beep", "beep is done\n", R"({"duration":0})"},
        Case{"BeepWithDuration", "beep 3", "beep is done\n", R"({"duration":3})"},
        Case{"Reboot", "reboot", "the terminal restarts; mvx2 --attempts 10 status waits for it\n",
             R"({"mode":"boot loader"})"},
        Case{"Quit", "quit", "the terminal is in its command mode\n", R"({"mode":"command"})"},
        Case{"Online", "online", "the terminal is in its on-line mode\n", R"({"mode":"on-line"})"},
        Case{"Send", "send version", "MVX3 SIM V1.0\n", R"({"lines":["MVX3 SIM V1.0"],"mode":"command"})"},
        Case{"SendForSeveralLines", "send listgrp", "1\n4\n", R"({"lines":["1","4"],"mode":"command"})"},
        Case{"SendForAnError", "send nonsense", "ERR unknown\n",
             R"({"lines":["ERR unknown"],"mode":"command"})"},
        Case{"SendRaw", "send --raw 'trs\\r'", "trs\\r\\n42\\r\\n>\\x90\n",
             R"({"reply":"trs\\r\\n42\\r\\n>\\x90","hex":"7472730D0A34320D0A3E90"})"},
        Case{"Apdu", "apdu FFCA000000", "4B1D5E27  90 00 (done)\n",
             R"({"data":"4B1D5E27","sw":"90 00","name":"done"})"},
        Case{"ApduThatTheCardRefuses", "apdu '00 A4 00 00'", "6D 00 (instruction not supported)\n",
             R"({"data":"","sw":"6D 00","name":"instruction not supported"})"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Helpers, Command,
    testing::Values(Case{"ExplainStatus", "explain 0x8010001D",
                         "Code     0x8010001D (PC/SC status)\nName     SCARD_E_NO_SERVICE\n"
                         "Meaning  pcscd does not run, or its socket cannot be reached\n"
                         "Remedy   sudo systemctl start pcscd.socket\n",
                         R"({"kind":"PC/SC status","code":"0x8010001D","name":"SCARD_E_NO_SERVICE",)"
                         R"("meaning":"pcscd does not run, or its socket cannot be reached",)"
                         R"("remedy":"sudo systemctl start pcscd.socket"})"},
                    Case{"ExplainUnlockStatus", "explain -2",
                         "Code     -2 (unlock status)\nName     UNLOCK_MAC\n"
                         "Meaning  the SAM's proof or the length of its reply is wrong\n"
                         "Remedy   use the key of this SAM\n",
                         R"({"kind":"unlock status","code":"-2","name":"UNLOCK_MAC",)"
                         R"("meaning":"the SAM's proof or the length of its reply is wrong",)"
                         R"("remedy":"use the key of this SAM"})"}),
    nameOf);

// ---- what they do to the terminal

TEST(CommandEffect, SetWritesTheTerminalsValue) {
  mvx2("set department 77");
  EXPECT_EQ(sim("get department"), "77");
}

TEST(CommandEffect, PurseDeleteTakesTheNumberOffTheList) {
  mvx2("purse delete 2");
  EXPECT_EQ(sim("get listpurses"), "1 5");
}

TEST(CommandEffect, BeepBeepsOnce) {
  mvx2("beep 3");
  EXPECT_EQ(sim("get beeps"), "1");
}

TEST(CommandEffect, OnlineAndQuitChangeTheMode) {
  mvx2("online");
  EXPECT_EQ(sim("get state"), "online");
  mvx2("quit");
  EXPECT_EQ(sim("get state"), "command");
}

TEST(CommandEffect, RebootBringsTheBootLoader) {
  mvx2("reboot");
  EXPECT_EQ(sim("get state"), "boot");
}

TEST(CommandEffect, AnEmptyListIsNoFailure) {
  mvx2("group delete 1");
  mvx2("group delete 4");
  const Outcome run = mvx2("group list");
  EXPECT_EQ(run.exit, 0);
  EXPECT_EQ(run.out, "none\n");
  EXPECT_EQ(mvx2("group list --json").json()["numbers"], nlohmann::json::array());
}

TEST(CommandEffect, GetAllReadsEveryValueThatValuesLists) {
  const nlohmann::json listed = mvx2("values --json").json()["values"];
  const nlohmann::json read = mvx2("get --all --json").json()["values"];
  ASSERT_EQ(read.size(), listed.size());
  for (std::size_t i = 0; i < read.size(); ++i) {
    EXPECT_EQ(read[i]["name"], listed[i]["name"]);
    EXPECT_FALSE(read[i]["value"].is_null()) << read[i];
  }
}

TEST(CommandEffect, GetAllIsTheSameInBothForms) {
  const nlohmann::json result = mvx2("get --all --json").json();
  std::string expected;
  for (const auto& value : result["values"]) expected += value["text"].get<std::string>() + '\n';
  EXPECT_EQ(mvx2("get --all --quiet").out, expected);
}

TEST(CommandEffect, SetTakesTheWholeRangeOfAType) {
  EXPECT_EQ(mvx2("set value -2147483648").exit, 0);
  EXPECT_EQ(sim("get value"), "-2147483648");
  EXPECT_EQ(mvx2("set value 2147483647").exit, 0);
  EXPECT_EQ(sim("get value"), "2147483647");
}

TEST(CommandEffect, ReadsANumberWhoseHighestBitIsSet) {
  sim("set cardid 0xFEDCBA98");
  EXPECT_EQ(mvx2("get cardid").out, "cardid  0xFEDCBA98\n");
  EXPECT_EQ(mvx2("get cardid --json").json()["values"][0]["value"], 0xFEDCBA98U);
}

}  // namespace
