// The tables of codes.
#include "pcsc_names.h"

#include <gtest/gtest.h>
#include <winscard.h>

#include <utility>

namespace {

using mvx2tool::explainStatus;
using mvx2tool::explainStatusWord;
using mvx2tool::explainText;
using mvx2tool::explainUnlock;
using mvx2tool::Explanation;

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): nothing else turns a name into text
#define STATUS(name) std::pair<LONG, const char*>(name, #name)

// The numbers are those of pcsc-lite's own header.
const std::pair<LONG, const char*> statuses[] = {STATUS(SCARD_S_SUCCESS),
                                                 STATUS(SCARD_F_INTERNAL_ERROR),
                                                 STATUS(SCARD_E_CANCELLED),
                                                 STATUS(SCARD_E_INVALID_HANDLE),
                                                 STATUS(SCARD_E_INVALID_PARAMETER),
                                                 STATUS(SCARD_E_INVALID_TARGET),
                                                 STATUS(SCARD_E_NO_MEMORY),
                                                 STATUS(SCARD_F_WAITED_TOO_LONG),
                                                 STATUS(SCARD_E_INSUFFICIENT_BUFFER),
                                                 STATUS(SCARD_E_UNKNOWN_READER),
                                                 STATUS(SCARD_E_TIMEOUT),
                                                 STATUS(SCARD_E_SHARING_VIOLATION),
                                                 STATUS(SCARD_E_NO_SMARTCARD),
                                                 STATUS(SCARD_E_UNKNOWN_CARD),
                                                 STATUS(SCARD_E_CANT_DISPOSE),
                                                 STATUS(SCARD_E_PROTO_MISMATCH),
                                                 STATUS(SCARD_E_NOT_READY),
                                                 STATUS(SCARD_E_INVALID_VALUE),
                                                 STATUS(SCARD_E_SYSTEM_CANCELLED),
                                                 STATUS(SCARD_F_COMM_ERROR),
                                                 STATUS(SCARD_F_UNKNOWN_ERROR),
                                                 STATUS(SCARD_E_INVALID_ATR),
                                                 STATUS(SCARD_E_NOT_TRANSACTED),
                                                 STATUS(SCARD_E_READER_UNAVAILABLE),
                                                 STATUS(SCARD_P_SHUTDOWN),
                                                 STATUS(SCARD_E_PCI_TOO_SMALL),
                                                 STATUS(SCARD_E_READER_UNSUPPORTED),
                                                 STATUS(SCARD_E_DUPLICATE_READER),
                                                 STATUS(SCARD_E_CARD_UNSUPPORTED),
                                                 STATUS(SCARD_E_NO_SERVICE),
                                                 STATUS(SCARD_E_SERVICE_STOPPED),
                                                 STATUS(SCARD_E_UNEXPECTED),
                                                 STATUS(SCARD_E_ICC_INSTALLATION),
                                                 STATUS(SCARD_E_ICC_CREATEORDER),
                                                 STATUS(SCARD_E_DIR_NOT_FOUND),
                                                 STATUS(SCARD_E_FILE_NOT_FOUND),
                                                 STATUS(SCARD_E_NO_DIR),
                                                 STATUS(SCARD_E_NO_FILE),
                                                 STATUS(SCARD_E_NO_ACCESS),
                                                 STATUS(SCARD_E_WRITE_TOO_MANY),
                                                 STATUS(SCARD_E_BAD_SEEK),
                                                 STATUS(SCARD_E_INVALID_CHV),
                                                 STATUS(SCARD_E_UNKNOWN_RES_MNG),
                                                 STATUS(SCARD_E_NO_SUCH_CERTIFICATE),
                                                 STATUS(SCARD_E_CERTIFICATE_UNAVAILABLE),
                                                 STATUS(SCARD_E_NO_READERS_AVAILABLE),
                                                 STATUS(SCARD_E_COMM_DATA_LOST),
                                                 STATUS(SCARD_E_NO_KEY_CONTAINER),
                                                 STATUS(SCARD_E_SERVER_TOO_BUSY),
                                                 STATUS(SCARD_W_UNSUPPORTED_CARD),
                                                 STATUS(SCARD_W_UNRESPONSIVE_CARD),
                                                 STATUS(SCARD_W_UNPOWERED_CARD),
                                                 STATUS(SCARD_W_RESET_CARD),
                                                 STATUS(SCARD_W_REMOVED_CARD),
                                                 STATUS(SCARD_W_SECURITY_VIOLATION),
                                                 STATUS(SCARD_W_WRONG_CHV),
                                                 STATUS(SCARD_W_CHV_BLOCKED),
                                                 STATUS(SCARD_W_EOF),
                                                 STATUS(SCARD_W_CANCELLED_BY_USER),
                                                 STATUS(SCARD_W_CARD_NOT_AUTHENTICATED)};

TEST(PcscNames, AreThoseOfPcscLite) {
  for (const auto& [code, name] : statuses)
    EXPECT_STREQ(mvx2tool::statusName(static_cast<std::uint32_t>(code)), name);
}

TEST(PcscNames, AreAllExplainedWithMeaningAndRemedy) {
  for (const auto& [code, name] : statuses) {
    const Explanation explanation = explainStatus(static_cast<std::uint32_t>(code));
    EXPECT_NE(explanation.meaning, "") << name;
    EXPECT_NE(explanation.remedy, "") << name;
  }
}

TEST(PcscNames, AdmitAnUnknownStatus) { EXPECT_EQ(explainStatus(0x80100099).name, "unknown status"); }

TEST(StatusWords, PreferTheExactWordToItsFamily) {
  EXPECT_EQ(explainStatusWord(0x6982).name, "security status not satisfied");
  EXPECT_EQ(explainStatusWord(0x6999).name, "command not allowed");
  EXPECT_EQ(explainStatusWord(0x9000).name, "done");
  EXPECT_EQ(explainStatusWord(0x90AF).name, "more follows");
}

TEST(StatusWords, ReadTheNumberInAFamily) {
  EXPECT_EQ(explainStatusWord(0x6112).name, "answer waits");
  EXPECT_EQ(explainStatusWord(0x63C2).name, "tries left");
  EXPECT_EQ(explainStatusWord(0x6C10).name, "wrong Le");
}

TEST(StatusWords, AdmitAnUnknownWord) { EXPECT_EQ(explainStatusWord(0x1234).name, "unknown status word"); }

TEST(UnlockStatus, ExplainsItsOwnNumbersAndThoseOfPcsc) {
  EXPECT_EQ(explainUnlock(-5).name, "UNLOCK_NO_RANDOM");
  EXPECT_EQ(explainUnlock(SCARD_E_NO_SERVICE).name, "SCARD_E_NO_SERVICE");
}

struct Spelling {
  const char* text;
  const char* code;
};

class Spelled : public testing::TestWithParam<Spelling> {};

TEST_P(Spelled, IsUnderstood) {
  const auto explanation = explainText(GetParam().text);
  ASSERT_TRUE(explanation);
  EXPECT_EQ(explanation->code, GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(Code, Spelled,
                         testing::Values(Spelling{"0x8010001D", "0x8010001D"},
                                         Spelling{"8010001d", "0x8010001D"},
                                         Spelling{"SCARD_E_NO_SERVICE", "0x8010001D"},
                                         Spelling{"scard_e_no_service", "0x8010001D"},
                                         Spelling{"0", "0x00000000"}, Spelling{"6982", "69 82"},
                                         Spelling{"69 82", "69 82"}, Spelling{"0x6982", "69 82"},
                                         Spelling{"-1", "-1"}, Spelling{"-5", "-5"}));

TEST(Spelling, ThatIsNoCodeIsTurnedDown) {
  for (const char* const text : {"", "-4", "xyz", "123", "12345", "123456789", "0x", "SCARD_E_NONE"})
    EXPECT_FALSE(explainText(text)) << text;
}

}  // namespace
