// What a client of a simulation's daemon sees. Each test runs inside a simulation of its own.
#include "control_code.h"

#include <gtest/gtest.h>

#include <winscard.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

const std::string terminal = "KRV MVX3 Terminal 00 00";
const std::string sam = "ACS SAM 00 00";

void sim(const std::string& line) {
  // NOLINTNEXTLINE(cert-env33-c): the command lines are this file's own
  ASSERT_EQ(std::system((MVX2_SIM " " + line).c_str()), 0) << line;
}

struct Reply {
  LONG status = SCARD_S_SUCCESS;
  Bytes bytes;
};

class Client : public testing::Test {
 protected:
  void SetUp() override { SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context); }
  void TearDown() override { SCardReleaseContext(context); }

  // The names that the daemon lists, one after the other.
  std::vector<std::string> list() {
    std::vector<char> names(1000);
    DWORD length = names.size();
    std::vector<std::string> all;
    if (SCardListReaders(context, nullptr, names.data(), &length) != SCARD_S_SUCCESS) return all;
    for (const char* name = names.data(); *name != '\0'; name += all.back().size() + 1)
      all.emplace_back(name);
    return all;
  }

  LONG connect(const std::string& name) {
    return SCardConnect(context, name.c_str(), SCARD_SHARE_SHARED, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                        &card, &pci.dwProtocol);
  }

  Reply transmit(const Bytes& command) {
    Bytes buffer(69);
    DWORD length = buffer.size();
    pci.cbPciLength = sizeof pci;
    Reply reply;
    reply.status = SCardTransmit(card, &pci, command.data(), command.size(), &pci, buffer.data(), &length);
    if (reply.status == SCARD_S_SUCCESS) reply.bytes.assign(buffer.data(), buffer.data() + length);
    return reply;
  }

  Reply announce(const std::string& line) {
    Bytes command = {0xFF, 0x00, 0x00, 0x00, static_cast<unsigned char>(line.size())};
    command.insert(command.end(), line.begin(), line.end());
    return transmit(command);
  }

  std::string ask(const std::string& line) {
    const Reply first = announce(line);
    if (first.bytes.size() != 2 || first.bytes[0] != 0x61) return "no answer";
    const Bytes answer = transmit({0xFF, 0xC0, 0x00, 0x00, first.bytes[1]}).bytes;
    return {answer.begin(), answer.end()};
  }

  std::string control(const std::string& line) {
    char reply[100];
    DWORD length = 0;
    const LONG status =
        SCardControl(card, MVX2SIM_CONTROL_CODE, line.data(), line.size(), reply, sizeof reply, &length);
    EXPECT_EQ(status, SCARD_S_SUCCESS);
    return {reply, length};
  }

  SCARDCONTEXT context = 0;
  SCARDHANDLE card = 0;
  SCARD_IO_REQUEST pci{};
};

// A client that is connected to the terminal's reader.
class TerminalClient : public Client {
 protected:
  void SetUp() override {
    Client::SetUp();
    connect(terminal);
  }
};

const std::string default_credit = "credit\r\n1250\r\n>\x90" + std::string(1, '\0');

}  // namespace

TEST_F(Client, SeesBothReaders) { EXPECT_EQ(list(), (std::vector{sam, terminal})); }

TEST_F(TerminalClient, ReadsTheCredit) { EXPECT_EQ(ask("credit\r"), default_credit); }

TEST_F(Client, ReadsTheVersionRecordOfTheSam) {
  ASSERT_EQ(connect(sam), SCARD_S_SUCCESS);
  const Bytes record = transmit({0x80, 0x60, 0x00, 0x00, 0x00}).bytes;
  ASSERT_EQ(record.size(), 31U);
  EXPECT_EQ(Bytes(&record[14], &record[21]), (Bytes{0x04, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}));
}

TEST_F(TerminalClient, SetsAndGetsValuesByTheControlCode) {
  EXPECT_EQ(control("set credit 500"), "OK");
  EXPECT_EQ(control("get credit"), "500");
  EXPECT_EQ(control("set credit x").substr(0, 4), "ERR ");
  EXPECT_EQ(ask("credit\r").substr(0, 13), "credit\r\n500\r\n");
}

TEST_F(TerminalClient, IsRefusedAnotherControlCodeAndATooSmallBuffer) {
  char reply[4];
  DWORD length = 0;
  EXPECT_EQ(SCardControl(card, SCARD_CTL_CODE(1), "get credit", 10, reply, sizeof reply, &length),
            SCARD_E_UNSUPPORTED_FEATURE);
  EXPECT_EQ(SCardControl(card, MVX2SIM_CONTROL_CODE, "get cardid", 10, reply, sizeof reply, &length),
            SCARD_E_INSUFFICIENT_BUFFER);
}

TEST_F(TerminalClient, IsScriptedFromOutsideWhileItHoldsATransaction) {
  ASSERT_EQ(SCardBeginTransaction(card), SCARD_S_SUCCESS);
  sim("set credit 77");
  EXPECT_EQ(ask("credit\r").substr(0, 12), "credit\r\n77\r\n");
}

TEST_F(TerminalClient, SeesATransmitFailAndTheNextSucceed) {
  sim("fault transmit");
  EXPECT_EQ(announce("credit\r").status, SCARD_E_NOT_TRANSACTED);
  EXPECT_EQ(ask("credit\r"), default_credit);
}

TEST_F(TerminalClient, SeesTheFetchFailAlone) {
  sim("fault transmit after 1");
  EXPECT_EQ(announce("credit\r").status, SCARD_S_SUCCESS);
  EXPECT_EQ(transmit({0xFF, 0xC0, 0x00, 0x00, 15}).status, SCARD_E_NOT_TRANSACTED);
}

TEST_F(TerminalClient, SeesAnotherFirstByteATruncatedAndAnOverlongReply) {
  sim("fault first 90");
  EXPECT_EQ(announce("credit\r").bytes[0], 0x90);
  sim("fault truncate 1");
  EXPECT_EQ(announce("credit\r").bytes.size(), 1U);
  sim("fault extend 70");
  EXPECT_EQ(announce("credit\r").status, SCARD_E_INSUFFICIENT_BUFFER);
}

TEST_F(TerminalClient, GetsADelayedReplyAllTheSame) {
  sim("fault delay 50");
  EXPECT_EQ(ask("credit\r"), default_credit);
}

TEST_F(TerminalClient, IsScriptedFromOutsideWhileAReplyIsDelayed) {
  sim("fault delay 60000");
  std::atomic<bool> replied = false;
  std::thread asking([this, &replied] {
    ask("credit\r");
    replied = true;
  });
  // NOLINTNEXTLINE(cert-env33-c): the command line is this file's own
  while (std::system(MVX2_SIM " get transmits | grep -qx 0") == 0) continue;
  for (int i = 0; i < 10; ++i) sim("get transmits");
  EXPECT_FALSE(replied);
  sim("daemon stop");  // nobody waits for the reply any more
  asking.join();
}

TEST_F(TerminalClient, LosesTheCardAndConnectsAgainWhenItIsBack) {
  sim("card out");
  EXPECT_EQ(announce("credit\r").status, SCARD_W_REMOVED_CARD);
  EXPECT_EQ(connect(terminal), SCARD_E_NO_SMARTCARD);
  sim("card in");
  ASSERT_EQ(connect(terminal), SCARD_S_SUCCESS);
  EXPECT_EQ(ask("credit\r"), default_credit);
}

TEST_F(TerminalClient, LosesTheReaderAndConnectsAgainWhenItIsBack) {
  ASSERT_EQ(control("set credit 500"), "OK");
  sim("reader out");
  EXPECT_EQ(list(), std::vector{sam});
  EXPECT_NE(announce("credit\r").status, SCARD_S_SUCCESS);
  EXPECT_EQ(connect(terminal), SCARD_E_UNKNOWN_READER);
  sim("reader in");
  ASSERT_EQ(connect(terminal), SCARD_S_SUCCESS);
  EXPECT_EQ(ask("credit\r").substr(0, 13), "credit\r\n500\r\n");
}

TEST_F(Client, FindsNoReaderWhenBothAreOut) {
  sim("reader out terminal");
  sim("reader out sam");
  DWORD length = 0;
  EXPECT_EQ(SCardListReaders(context, nullptr, nullptr, &length), SCARD_E_NO_READERS_AVAILABLE);
}

TEST_F(TerminalClient, LosesTheDaemonAndFindsANewTerminalBehindTheNextOne) {
  ASSERT_EQ(control("set credit 500"), "OK");
  sim("daemon restart");
  EXPECT_NE(announce("credit\r").status, SCARD_S_SUCCESS);
  SCardReleaseContext(context);
  ASSERT_EQ(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context), SCARD_S_SUCCESS);
  ASSERT_EQ(connect(terminal), SCARD_S_SUCCESS);
  EXPECT_EQ(ask("credit\r"), default_credit);
}

TEST_F(Client, FindsNoServiceWhileTheDaemonIsStopped) {
  sim("daemon stop");
  SCARDCONTEXT another = 0;
  EXPECT_EQ(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &another), SCARD_E_NO_SERVICE);
  sim("reader out sam");
  sim("daemon start");
  ASSERT_EQ(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context), SCARD_S_SUCCESS);
  EXPECT_EQ(list(), std::vector{terminal});
}
