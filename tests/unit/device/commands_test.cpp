// What single commands make of unusual values and replies.
#include "support/log_capture.h"
#include "unit/device/facade_fixture.h"

#include <gtest/gtest.h>

#include <exception>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace mvx2test {
namespace {

using namespace std::string_literals;

class Commands : public ConnectedFacade {
 protected:
  // The request of a call.
  template <typename Call>
  std::string requestOf(Call call) {
    pcsc.apdus.clear();
    call();
    return pcsc.requests().at(0);
  }
};

// ---- values that are sent

TEST_F(Commands, SendABoolAsZeroOrOne) {
  EXPECT_EQ(requestOf([this] { facade->setAddVal(true); }), "addval 1\r");
  EXPECT_EQ(requestOf([this] { facade->setAddVal(false); }), "addval 0\r");
}

TEST_F(Commands, SendAnUnsignedIntUpTo2147483647AsItIsAndNegativeAbove) {
  EXPECT_EQ(requestOf([this] { facade->setPurse(2147483647U); }), "purse 2147483647\r");
  EXPECT_EQ(requestOf([this] { facade->setPurse(2147483648U); }), "purse -2147483648\r");
  EXPECT_EQ(requestOf([this] { facade->setAccount(4294967295U); }), "account -1\r");
}

TEST_F(Commands, SendTheSmallestInt) {
  EXPECT_EQ(requestOf([this] { facade->setValue(-2147483647 - 1); }), "value -2147483648\r");
}

TEST_F(Commands, SendTheSectorWordInHexadecimalWithoutLeadingZeros) {
  EXPECT_EQ(requestOf([this] { facade->setSectors1(0); }), "sectors 0x0\r");
  EXPECT_EQ(requestOf([this] { facade->setSectors1(255); }), "sectors 0xff\r");
  EXPECT_EQ(requestOf([this] { facade->setSectors1(65535); }), "sectors 0xffff\r");
}

TEST_F(Commands, IgnoreTheFirstArgumentOfSetSectors2) {
  const std::vector<unsigned char> firsts = {0, 1, 255};
  for (const unsigned char first : firsts)
    EXPECT_EQ(requestOf([this, first] { facade->setSectors2(first, 5); }), "sectors 5\r");
}

TEST_F(Commands, BeepWithoutANumberForADurationOfZero) {
  EXPECT_EQ(requestOf([this] { facade->beep(0); }), "beep\r");
}

TEST_F(Commands, BeepWithANegativeNumberAbove2147483647) {
  EXPECT_EQ(requestOf([this] { facade->beep(4294967295U); }), "beep -1\r");
}

// ---- texts that are sent

TEST_F(Commands, SendABlankAfterTheWordEvenBeforeAnEmptyText) {
  EXPECT_EQ(requestOf([this] { facade->setMadKey_CPtr(""); }), "madkey \r");
  EXPECT_EQ(requestOf([this] { facade->beep_CPtr(""); }), "beep \r");
  EXPECT_EQ(requestOf([this] { facade->setValue_CPtr(""); }), "value \r");
}

TEST_F(Commands, SendTheCallersTextUnchanged) {
  EXPECT_EQ(requestOf([this] { facade->setValue_CPtr("  12 \t 34\n "); }), "value   12 \t 34\n \r");
  EXPECT_EQ(requestOf([this] { facade->setUKeyA_CPtr("\xC3\xA9#"); }), "ukeya \xC3\xA9#\r");
}

TEST_F(Commands, AppendNoCarriageReturnToATextThatHoldsOne) {
  EXPECT_EQ(requestOf([this] { facade->setValue_CPtr("1\r2"); }), "value 1\r2");
  EXPECT_EQ(requestOf([this] { facade->transaction("a\rb"); }), "a\rb");
}

TEST_F(Commands, SendNothingForALineThatIsTooLong) {
  pcsc.answerLine("stale");
  EXPECT_STREQ(facade->setFreeKey1_CPtr(std::string(64, 'A').c_str()), "");
  EXPECT_EQ(pcsc.apdus.size(), 0U);
}

TEST_F(Commands, SendAnEmptyLineForAnEmptyTransaction) {
  EXPECT_EQ(requestOf([this] { facade->transaction(""); }), "\r");
  EXPECT_EQ(requestOf([this] { facade->noFormatedTransaction(""); }), "");
}

// ---- replies

TEST_F(Commands, ReadAReplyWithoutDigitsAsZero) {
  pcsc.answerLine("unknown command");
  EXPECT_EQ(facade->getCredit(), 0);
}

TEST_F(Commands, ReadAFailedExchangeAsAnEmptyReply) {
  const LogCapture log;
  pcsc.fail("SCardTransmit", static_cast<LONG>(SCARD_E_NO_SERVICE));
  EXPECT_EQ(facade->getCredit(), 0);
  pcsc.fail("SCardTransmit", static_cast<LONG>(SCARD_E_NO_SERVICE));
  EXPECT_STREQ(facade->getCredit_CPtr(), "");
  EXPECT_EQ(log.text(), "");
}

TEST_F(Commands, KeepTheLowBitsThatTheResultTypeHolds) {
  pcsc.answerLine("-1");
  EXPECT_EQ(facade->getPts(), 255);
  pcsc.answerLine("-65534");
  EXPECT_EQ(facade->getPincode(), 2);
}

TEST_F(Commands, ReadANumberOf33BitsAsLongHoldsIt) {
  pcsc.answerLine("4294967301");
  const bool longIsInt = std::numeric_limits<long>::max() == std::numeric_limits<int>::max();
  EXPECT_EQ(facade->getSerial(), longIsInt ? std::numeric_limits<int>::max() : 5);
}

TEST_F(Commands, TakeAFlagForTrueIfTheNumberIsOtherThanZero) {
  const std::vector<std::pair<std::string, bool>> replies = {
      {"0", false}, {"on", false}, {"1", true}, {"-1", true}, {"256", true}};
  for (const auto& [reply, flag] : replies) {
    pcsc.answerLine(reply);
    EXPECT_EQ(facade->getSwitch(), flag) << reply;
  }
}

TEST_F(Commands, KeepAll32BitsOfACardIdentifier) {
  pcsc.answerLine("80000000");
  EXPECT_EQ(facade->getCardId(), -2147483647 - 1);
}

TEST_F(Commands, ReadTheSectorWordAsOneHexadecimalNumber) {
  const std::vector<std::pair<std::string, unsigned short>> replies = {
      {"0x1234", 4660},       {"1F", 31}, {"7", 7}, {"", 0}, {"0x", 0}, {"0x12345", 0x2345},
      {"1 2", 256 + 4080 + 2}};
  for (const auto& [reply, sectors] : replies) {
    pcsc.answerLine(reply);
    EXPECT_EQ(facade->getSectors(), sectors) << reply;
  }
}

TEST_F(Commands, ReplaceTheTextOfThePreviousCall) {
  pcsc.answerLine("a long reply of the terminal");
  const char* const first = facade->getMode_CPtr();
  pcsc.answerLine("ok");
  EXPECT_STREQ(facade->getMode_CPtr(), "ok");
  EXPECT_STREQ(first, "ok") << "the buffer is the same";
}

TEST_F(Commands, ReturnAnErrorTextOfTheTerminalAsItStands) {
  pcsc.answerLine("ERR 3: no card");
  EXPECT_STREQ(facade->readCard_CPtr(), "ERR 3: no card");
}

TEST_F(Commands, HandOutAllBytesOfARawReplyThatHoldsNuls) {
  pcsc.answer("\0\x01\0"s);
  const char* const reply = facade->noFormatedTransaction("x");
  EXPECT_EQ(std::string(reply, 5), "\0\x01\0\x90\0"s);
}

// ---- texts that stay

TEST_F(Commands, KeepReturningNoConnectedWithoutAChannelAfterAFailure) {
  breakChannel();
  pcsc.fail("SCardEstablishContext", static_cast<LONG>(SCARD_E_NO_SERVICE));
  EXPECT_STREQ(facade->getUOffset_CPtr(), "No connected");
  EXPECT_STREQ(facade->getUOffset_CPtr(), "No connected");
}

TEST_F(Commands, ReturnThePreviousReplyWithoutAChannelWhereTheBufferIsLeftAlone) {
  pcsc.answerLine("17");
  facade->getUOffset_CPtr();
  facade->disconnect();
  EXPECT_STREQ(facade->getUOffset_CPtr(), "17");
}

// ---- lists

std::vector<unsigned int> tenOf(const unsigned int* list) { return {list, list + 10}; }

TEST_F(Commands, ListTheFirstTenOfTwelveNumbers) {
  pcsc.answerLine("1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n12");
  EXPECT_EQ(tenOf(facade->getListPurses()), (std::vector{1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U}));
}

TEST_F(Commands, ListNothingOfAnEarlierLongerReply) {
  pcsc.answerLine("3\r\n7\r\n12");
  facade->getListGrp();
  pcsc.answerLine("5");
  EXPECT_EQ(tenOf(facade->getListGrp()), (std::vector{5U, 0U, 0U, 0U, 0U, 0U, 0U, 0U, 0U, 0U}));
}

TEST_F(Commands, KeepTheTwoListsApart) {
  pcsc.answerLine("3");
  const unsigned int* const purses = facade->getListPurses();
  pcsc.answerLine("4");
  const unsigned int* const groups = facade->getListGrp();
  EXPECT_EQ(purses[0], 3U);
  EXPECT_EQ(groups[0], 4U);
}

TEST_F(Commands, ReturnTheSameListEveryTime) {
  const unsigned int* const list = facade->getListPurses();
  breakChannel();
  EXPECT_EQ(facade->getListPurses(), list) << "after a failure";
  facade->disconnect();
  EXPECT_EQ(facade->getListPurses(), list) << "without a channel";
}

TEST_F(Commands, EmptyTheListBeforeTheReadinessCheck) {
  pcsc.answerLine("3");
  const unsigned int* const list = facade->getListPurses();
  facade->disconnect();
  facade->enableExternalException(true);
  EXPECT_THROW(facade->getListPurses(), std::exception);
  EXPECT_EQ(list[0], 0U);
}

TEST_F(Commands, ReturnAllLinesOfAListAsText) {
  pcsc.answerLine("3\r\n7\r\n12");
  EXPECT_STREQ(facade->getListPurses_CPtr(), "3\n7\n12");
}

// ---- sendAPDU

TEST_F(Commands, SendARawBufferWithItsNuls) {
  const char apdu[] = {0x00, '\xA4', 0x00, 0x04};
  facade->sendAPDU(apdu, sizeof apdu);
  EXPECT_EQ(hex(pcsc.apdus.at(0)), "FF 00 01 00 04 00 A4 00 04");
}

TEST_F(Commands, SendANullBufferOfNoLength) {
  EXPECT_STREQ(facade->sendAPDU(nullptr, 0), "");
  EXPECT_EQ(hex(pcsc.apdus.at(0)), "FF 00 01 00 00");
}

TEST_F(Commands, TreatANullBufferWithALengthAsAFailure) {
  const LogCapture log;
  EXPECT_STREQ(facade->sendAPDU(nullptr, 1), "No connected");
  EXPECT_EQ(log.lines().at(0), "value : std::exception");
  EXPECT_EQ(pcsc.requests(), std::vector<std::string>{"\r"}) << "only the reconnection talks to the reader";
}

TEST_F(Commands, TreatARawBufferThatIsTooLongAsAFailure) {
  const std::string apdu(65, 'x');
  EXPECT_STREQ(facade->sendAPDU(apdu.data(), 65), "No connected");
}

TEST_F(Commands, TreatAFailedRawExchangeAsAFailure) {
  const LogCapture log;
  pcsc.fail("SCardBeginTransaction", static_cast<LONG>(SCARD_E_NO_SERVICE));
  EXPECT_STREQ(facade->sendAPDU("x", 1), "No connected");
  EXPECT_EQ(log.lines().at(0),
            "value : SCardBeginTransaction (0x8010001d) [mvx2NoFormattedTransaction:USBChannel:210]");
}

TEST_F(Commands, ClearAllOfTheRawReplyWithoutAChannel) {
  pcsc.answer("a long raw reply of the reader");
  facade->sendAPDU("x", 1);
  facade->disconnect();
  const char* const reply = facade->sendAPDU("x", 1);
  EXPECT_EQ(std::string(reply, 128), std::string(128, '\0'));
}

TEST_F(Commands, ClearTheRawReplyEvenIfTheCallThrows) {
  pcsc.answer("raw");
  const char* const reply = facade->sendAPDU("x", 1);
  facade->disconnect();
  facade->enableExternalException(true);
  EXPECT_THROW(facade->sendAPDU("x", 1), std::exception);
  EXPECT_STREQ(reply, "");
}

// ---- prompts

TEST_F(Commands, AskForThePromptWithALoneCarriageReturn) {
  EXPECT_EQ(requestOf([this] { facade->isBootloader(); }), "\r");
}

TEST_F(Commands, TellTheBootLoaderFromTheOnlineMode) {
  pcsc.answer("\r\n#");
  EXPECT_FALSE(facade->isOnline());
  pcsc.answer("\r\n$");
  EXPECT_FALSE(facade->isBootloader());
}

TEST_F(Commands, SeeNoPromptInAReplyThatEndsWithALineFeedOrHoldsNone) {
  for (const std::string reply : {"#\n", "$\n", "#", "$", ""}) {
    // Straight to the reader's reply: no status bytes behind it.
    pcsc.reply({0x61, static_cast<unsigned char>(reply.size())});
    if (!reply.empty()) pcsc.reply(bytesOf(reply));
    EXPECT_FALSE(facade->isBootloader()) << reply;
    pcsc.reply({0x61, static_cast<unsigned char>(reply.size())});
    if (!reply.empty()) pcsc.reply(bytesOf(reply));
    EXPECT_FALSE(facade->isOnline()) << reply;
  }
}

TEST_F(Commands, SeeNoPromptIfAnotherCharacterStartsTheLastLine) {
  pcsc.answer("#\r\n>");
  EXPECT_FALSE(facade->isBootloader());
  pcsc.answer("$\n #");
  EXPECT_FALSE(facade->isOnline());
}

}  // namespace
}  // namespace mvx2test
