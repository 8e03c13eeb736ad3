#include "Terminal.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

using mvx2sim::Bytes;
using mvx2sim::Terminal;

namespace {

Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

std::string send(Terminal& terminal, const std::string& text) {
  const Bytes answer = terminal.text(bytes(text));
  return {answer.begin(), answer.end()};
}

// What stands between the echoed line and the prompt, without the last end of line.
std::string ask(Terminal& terminal, const std::string& line) {
  const std::string answer = send(terminal, line + "\r");
  const std::string echo = line + "\r\n";
  EXPECT_EQ(answer.substr(0, echo.size()), echo);
  const std::string lines = answer.substr(echo.size(), answer.size() - echo.size() - 1);
  return lines.empty() ? "" : lines.substr(0, lines.size() - 2);
}

char promptAfter(Terminal& terminal, const std::string& line) { return send(terminal, line + "\r").back(); }

}  // namespace

TEST(TerminalLine, IsEchoedThenAnsweredThenPrompted) {
  Terminal terminal;
  EXPECT_EQ(send(terminal, "credit\r"), "credit\r\n1250\r\n>");
}

TEST(TerminalLine, ThatIsEmptyIsAnsweredWithThePromptAlone) {
  Terminal terminal;
  EXPECT_EQ(send(terminal, "\r"), "\r\n>");
}

TEST(TerminalLine, WaitsForItsCarriageReturn) {
  Terminal terminal;
  EXPECT_EQ(send(terminal, "cre"), "cre");
  EXPECT_EQ(send(terminal, "dit\r"), "credit\r\n1250\r\n>");
}

TEST(TerminalLine, LeavesWhatFollowsItsCarriageReturnForTheNextOne) {
  Terminal terminal;
  EXPECT_EQ(send(terminal, "credit\rde"), "credit\r\n1250\r\n>");
  EXPECT_EQ(send(terminal, "bit\r"), "debit\r\n480\r\n>");
}

TEST(TerminalLine, IsCutInTheEchoWhenTheAnswerWouldNotFit) {
  Terminal terminal;
  const std::string line(64, 'x');
  const std::string answer = send(terminal, line + "\r");
  EXPECT_EQ(answer, line.substr(0, 67 - 16) + "\r\nERR unknown\r\n>");
  EXPECT_EQ(answer.size(), Terminal::max_answer);
}

TEST(TerminalLine, OfTheLongestListStillFits) {
  Terminal terminal;
  ASSERT_TRUE(terminal.set("listpurses", "200 201 202 203 204 205 206 207 208 209"));
  EXPECT_EQ(send(terminal, "listpurses\r"),
            "listpurses\r\n200\r\n201\r\n202\r\n203\r\n204\r\n205\r\n206\r\n207\r\n208\r\n209\r\n>");
  EXPECT_LE(send(terminal, "listpurses\r").size(), Terminal::max_answer);
}

TEST(TerminalLine, WithoutAnEndDoesNotGrowWithoutEnd) {
  Terminal terminal;
  for (int i = 0; i < 1000; ++i) send(terminal, std::string(64, 'y'));
  EXPECT_EQ(send(terminal, "\r").substr(0, 51), std::string(51, 'y'));
}

TEST(TerminalWord, OfEveryValueIsAnsweredWithItsDefault) {
  const std::vector<std::pair<std::string, std::string>> defaults = {{"value", "250"},
                                                                     {"credit", "1250"},
                                                                     {"debit", "480"},
                                                                     {"wrerrs", "0"},
                                                                     {"trs", "42"},
                                                                     {"ccredit", "7"},
                                                                     {"cdebit", "12"},
                                                                     {"ctrs", "19"},
                                                                     {"pmode", "1"},
                                                                     {"purse", "1"},
                                                                     {"maxval", "100000"},
                                                                     {"addval", "0"},
                                                                     {"serial", "30457"},
                                                                     {"account", "4711"},
                                                                     {"pincode", "1234"},
                                                                     {"department", "12"},
                                                                     {"category", "3"},
                                                                     {"pts", "10"},
                                                                     {"ptsi", "1"},
                                                                     {"mode", "2"},
                                                                     {"uoffset", "4"},
                                                                     {"usector", "1"},
                                                                     {"uoption", "0x0003"},
                                                                     {"uflagid", "0x00A5"},
                                                                     {"issuer", "0x1234"},
                                                                     {"freq", "0x0D"},
                                                                     {"cardid", "0x4B1D5E27"},
                                                                     {"sectors", "0x0006"},
                                                                     {"switch", "1"},
                                                                     {"lastmvx2", "77"},
                                                                     {"listpurses", "1\r\n2\r\n5"},
                                                                     {"listgrp", "1\r\n4"},
                                                                     {"freekey1", "FFFFFFFFFFFF"},
                                                                     {"freekey2", "FFFFFFFFFFFF"},
                                                                     {"madkey", "A0A1A2A3A4A5"},
                                                                     {"ukeya", "FFFFFFFFFFFF"},
                                                                     {"version", "MVX3 SIM V1.0"},
                                                                     {"vboot", "BOOT SIM V1.0"}};
  Terminal terminal;
  for (const auto& [word, value] : defaults) EXPECT_EQ(ask(terminal, word), value) << word;
}

TEST(TerminalWord, OfAWritableValueIsReadBack) {
  const std::vector<std::tuple<std::string, std::string, std::string>> writes = {
      {"value", "-5", "-5"},
      {"purse", "2147483647", "2147483647"},
      {"maxval", "0", "0"},
      {"addval", "1", "1"},
      {"account", "987654", "987654"},
      {"pincode", "9999", "9999"},
      {"department", "65535", "65535"},
      {"category", "200", "200"},
      {"pts", "255", "255"},
      {"ptsi", "0", "0"},
      {"mode", "7", "7"},
      {"uoffset", "44", "44"},
      {"usector", "39", "39"},
      {"uoption", "4660", "0x1234"},
      {"uflagid", "65535", "0xFFFF"},
      {"issuer", "1", "0x0001"},
      {"freq", "255", "0xFF"},
      {"sectors", "0xa0b", "0x0A0B"}};
  Terminal terminal;
  for (const auto& [word, written, read] : writes) {
    ask(terminal, std::string(word).append(" ").append(written));
    EXPECT_EQ(ask(terminal, word), read) << word;
  }
}

TEST(TerminalWord, WithANewNumberIsAnsweredWithItInDecimal) {
  Terminal terminal;
  EXPECT_EQ(ask(terminal, "value -5"), "-5");
  EXPECT_EQ(ask(terminal, "issuer 4660"), "4660");
  EXPECT_EQ(ask(terminal, "sectors 0xff"), "255");
}

TEST(TerminalWord, RefusesWhatIsNoNumberOfItsRange) {
  Terminal terminal;
  for (const char* line :
       {"value 2147483648", "value -2147483649", "purse -1", "addval 2", "pincode 10000", "department 65536",
        "category 256", "usector 40", "issuer 65536", "freq 256", "sectors 0x10000", "maxval -1294967296",
        "value 1 2", "value abc", "value ", "sectors 0x", "sectors 0x-1", "value 99999999999999999999"}) {
    EXPECT_EQ(ask(terminal, line), "ERR value") << line;
  }
  EXPECT_EQ(ask(terminal, "value"), "250");
  EXPECT_EQ(ask(terminal, "category"), "3");
}

TEST(TerminalWord, ThatIsOnlyReadCannotBeWritten) {
  Terminal terminal;
  for (const char* word : {"credit", "debit", "wrerrs", "trs", "ccredit", "cdebit", "ctrs", "pmode", "serial",
                           "cardid", "switch", "lastmvx2", "listpurses", "listgrp"})
    EXPECT_EQ(ask(terminal, std::string(word) + " 1"), "ERR value") << word;
  EXPECT_EQ(ask(terminal, "credit"), "1250");
}

TEST(TerminalWord, ThatNobodyKnowsIsAnError) {
  Terminal terminal;
  for (const char* line : {"credits", "Credit", " credit", "x", "state", "beeps"})
    EXPECT_EQ(ask(terminal, line), "ERR unknown") << line;
}

TEST(TerminalKey, IsKeptAsItWasWritten) {
  Terminal terminal;
  for (const char* word : {"freekey1", "freekey2", "madkey", "ukeya"}) {
    EXPECT_EQ(ask(terminal, std::string(word) + " 0123456789aB"), "0123456789aB") << word;
    EXPECT_EQ(ask(terminal, word), "0123456789aB") << word;
  }
}

TEST(TerminalKey, HasTwelveHexadecimalDigits) {
  Terminal terminal;
  for (const char* key : {"", "0123456789A", "0123456789ABC", "0123456789AG", "0x0123456789"})
    EXPECT_EQ(ask(terminal, std::string("madkey ") + key), "ERR value") << key;
  EXPECT_EQ(ask(terminal, "madkey"), "A0A1A2A3A4A5");
}

TEST(TerminalCard, ActionsSucceedOnTheCardThatLiesThere) {
  Terminal terminal;
  for (const char* word : {"read", "fread", "write", "persoread", "persocreate"})
    EXPECT_EQ(ask(terminal, word), "1") << word;
}

TEST(TerminalCard, ActionsNeedACard) {
  Terminal terminal;
  ASSERT_TRUE(terminal.set("switch", "0"));
  for (const char* word : {"read", "fread", "write", "persoread", "persocreate", "addgrp"})
    EXPECT_EQ(ask(terminal, word), "ERR card") << word;
}

TEST(TerminalPurse, IsAddedAndTakenByChangingToIt) {
  Terminal terminal;
  EXPECT_EQ(ask(terminal, "chpurse 9"), "9");
  EXPECT_EQ(ask(terminal, "listpurses"), "1\r\n2\r\n5\r\n9");
  EXPECT_EQ(ask(terminal, "purse"), "9");
  EXPECT_EQ(ask(terminal, "chpurse 2"), "2");
  EXPECT_EQ(ask(terminal, "listpurses"), "1\r\n2\r\n5\r\n9");
}

TEST(TerminalPurse, ThatIsDeletedLeavesTheFirstOneInItsPlace) {
  Terminal terminal;
  EXPECT_EQ(ask(terminal, "delpurse 1"), "1");
  EXPECT_EQ(ask(terminal, "listpurses"), "2\r\n5");
  EXPECT_EQ(ask(terminal, "purse"), "2");
  ask(terminal, "delpurse 2");
  ask(terminal, "delpurse 5");
  EXPECT_EQ(ask(terminal, "listpurses"), "");
  EXPECT_EQ(ask(terminal, "purse"), "0");
}

TEST(TerminalPurse, IsRefusedWhenUnknownOutOfRangeOrTheEleventh) {
  Terminal terminal;
  for (const char* line : {"delpurse 7", "chpurse 0", "chpurse 256", "chpurse", "delpurse", "chpurse x"})
    EXPECT_EQ(ask(terminal, line), "ERR value") << line;
  ASSERT_TRUE(terminal.set("listpurses", "1 2 3 4 5 6 7 8 9 10"));
  EXPECT_EQ(ask(terminal, "chpurse 11"), "ERR value");
}

TEST(TerminalGroup, IsAddedUnderTheFirstFreeNumberAndDeleted) {
  Terminal terminal;
  EXPECT_EQ(ask(terminal, "addgrp"), "2");
  EXPECT_EQ(ask(terminal, "listgrp"), "1\r\n4\r\n2");
  EXPECT_EQ(ask(terminal, "delgrp 4"), "4");
  EXPECT_EQ(ask(terminal, "listgrp"), "1\r\n2");
  EXPECT_EQ(ask(terminal, "delgrp 4"), "ERR value");
}

TEST(TerminalBootLoader, AnswersThreeLinesAfterAReboot) {
  Terminal terminal;
  EXPECT_EQ(send(terminal, "reboot\r"), "reboot\r\n#");
  EXPECT_EQ(promptAfter(terminal, ""), '#');
  EXPECT_EQ(promptAfter(terminal, ""), '#');
  EXPECT_EQ(promptAfter(terminal, ""), '#');
  EXPECT_EQ(promptAfter(terminal, ""), '>');
}

TEST(TerminalBootLoader, KnowsItsVersionAndNoOtherWord) {
  Terminal terminal;
  ask(terminal, "reboot");
  EXPECT_EQ(ask(terminal, "vboot"), "BOOT SIM V1.0");
  EXPECT_EQ(ask(terminal, "credit"), "ERR unknown");
}

TEST(TerminalBootLoader, IsLeftByQ) {
  Terminal terminal;
  ask(terminal, "reboot");
  EXPECT_EQ(promptAfter(terminal, "q"), '>');
  EXPECT_EQ(ask(terminal, "credit"), "1250");
}

TEST(TerminalOnLineMode, AnswersAllWordsUntilQ) {
  Terminal terminal;
  EXPECT_EQ(send(terminal, "online\r"), "online\r\n$");
  EXPECT_EQ(send(terminal, "credit\r"), "credit\r\n1250\r\n$");
  EXPECT_EQ(send(terminal, "q\r"), "q\r\n>");
}

TEST(TerminalBeep, IsCounted) {
  Terminal terminal;
  for (const char* line : {"beep", "beep 100", "beep "}) EXPECT_EQ(ask(terminal, line), "");
  EXPECT_EQ(ask(terminal, "beep loud"), "ERR value");
  EXPECT_EQ(ask(terminal, "beep -1"), "ERR value");
  EXPECT_EQ(terminal.get("beeps"), "3");
}

TEST(TerminalRawCommand, GetsTheNumberOfTheCard) {
  const Terminal terminal;
  EXPECT_EQ(terminal.raw({0xFF, 0xCA, 0x00, 0x00, 0x00}), (Bytes{0x4B, 0x1D, 0x5E, 0x27, 0x90, 0x00}));
}

TEST(TerminalRawCommand, IsRefusedWhenUnknownShortOrWithoutACard) {
  Terminal terminal;
  EXPECT_EQ(terminal.raw({0x00, 0xA4, 0x04, 0x00}), (Bytes{0x6D, 0x00}));
  EXPECT_EQ(terminal.raw({0xFF}), (Bytes{0x67, 0x00}));
  ASSERT_TRUE(terminal.set("switch", "0"));
  EXPECT_EQ(terminal.raw({0xFF, 0xCA, 0x00, 0x00, 0x00}), (Bytes{0x69, 0x85}));
}

TEST(TerminalBehindItsBack, TakesValuesThatALineMayOnlyRead) {
  Terminal terminal;
  EXPECT_TRUE(terminal.set("credit", "-300"));
  EXPECT_EQ(ask(terminal, "credit"), "-300");
  EXPECT_TRUE(terminal.set("cardid", "0x84A1B2C3"));
  EXPECT_EQ(ask(terminal, "cardid"), "0x84A1B2C3");
  EXPECT_TRUE(terminal.set("listgrp", "3 7 12"));
  EXPECT_EQ(ask(terminal, "listgrp"), "3\r\n7\r\n12");
  EXPECT_TRUE(terminal.set("listgrp", ""));
  EXPECT_EQ(ask(terminal, "listgrp"), "");
}

TEST(TerminalBehindItsBack, RefusesWhatDoesNotExistOrFit) {
  Terminal terminal;
  EXPECT_FALSE(terminal.set("nothing", "1"));
  EXPECT_FALSE(terminal.set("pmode", "256"));
  EXPECT_FALSE(terminal.set("listgrp", "3 x"));
  EXPECT_FALSE(terminal.set("listgrp", "1 2 3 4 5 6 7 8 9 10 11"));
  EXPECT_FALSE(terminal.set("state", "asleep"));
  EXPECT_EQ(terminal.get("nothing"), std::nullopt);
  EXPECT_EQ(terminal.get("listgrp"), "1 4");
}

TEST(TerminalBehindItsBack, IsPutIntoEveryState) {
  Terminal terminal;
  for (const auto& [state, prompt] : {std::pair{"boot", '#'}, {"online", '$'}, {"command", '>'}}) {
    ASSERT_TRUE(terminal.set("state", state));
    EXPECT_EQ(terminal.get("state"), state);
    EXPECT_EQ(promptAfter(terminal, ""), prompt);
  }
}

TEST(TerminalBehindItsBack, AnswersWritesWithoutKeepingThemWhileItIsFrozen) {
  Terminal terminal;
  ASSERT_TRUE(terminal.set("frozen", "1"));
  EXPECT_EQ(terminal.get("frozen"), "1");
  EXPECT_EQ(ask(terminal, "pts 77"), "77");
  EXPECT_EQ(terminal.get("pts"), "10");
  ASSERT_TRUE(terminal.set("frozen", "0"));
  EXPECT_EQ(ask(terminal, "pts 77"), "77");
  EXPECT_EQ(terminal.get("pts"), "77");
}

TEST(TerminalBehindItsBack, IsFrozenOrNot) {
  Terminal terminal;
  EXPECT_FALSE(terminal.set("frozen", "2"));
}

TEST(TerminalBehindItsBack, StaysInTheBootLoaderForAsManyLinesAsSet) {
  Terminal terminal;
  ASSERT_TRUE(terminal.set("state", "boot"));
  ASSERT_TRUE(terminal.set("bootlines", "1"));
  EXPECT_EQ(promptAfter(terminal, ""), '#');
  EXPECT_EQ(promptAfter(terminal, ""), '>');
}
