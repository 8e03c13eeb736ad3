// Arbitrary replies to every command and every unlock step, as PC/SC hands them over, against what each is
// said to accept. The first byte of the input chooses the operation, the second its argument; replies follow.
#include <mvx2/SAMChannel.h>
#include <mvx2/aes_cmac.h>

#include "fuzz.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <vector>

namespace {

using mvx2fuzz::check;
using Bytes = std::vector<unsigned char>;

constexpr std::size_t room = 69;
constexpr unsigned char filling = 0xEE;

unsigned char the_key[16] = {0x8F, 0x3A, 0x5C, 0x1E, 0x7B, 0x92, 0xD4, 0x60, 0x0A, 0x1B, 0x2C, 0x3D};

// The input, read from its start; zeros behind its end.
struct Input {
  const std::uint8_t* data;
  std::size_t size;

  unsigned char byte() {
    if (size == 0) return 0;
    --size;
    return *data++;
  }
  Bytes bytes(std::size_t length) {
    Bytes taken;
    for (std::size_t i = 0; i < length; ++i) taken.push_back(byte());
    return taken;
  }
};

// What PC/SC gave back last: the bytes that fit, filled up with zeros, and how many they are said to be.
struct Reply {
  LONG status = SCARD_F_COMM_ERROR;
  Bytes bytes = Bytes(room);
  std::size_t length = 0;
  bool hasRightMac = false;

  bool endsWith(unsigned char sw1, unsigned char sw2) const {
    return length >= 2 && bytes[length - 2] == sw1 && bytes[length - 1] == sw2;
  }
  bool isDone(std::size_t dataLength) const {
    return status == SCARD_S_SUCCESS && length == dataLength + 2 && endsWith(0x90, 0x00);
  }
  Bytes first(std::size_t count) const { return {bytes.begin(), bytes.begin() + static_cast<long>(count)}; }
};

Input input{nullptr, 0};
std::vector<Reply> replies;

// The MAC that the module owes for the host's random number in the second unlock step.
Bytes rightMac(const unsigned char* command) {
  unsigned char k1[16];
  unsigned char k2[16];
  unsigned char message[16] = {};
  unsigned char cmac[16];
  unsigned char iv[16] = {};
  aes_GenerateSubKey(the_key, k1, k2);
  std::copy_n(command + 13, 12, message);
  aes_buildCmac(the_key, k1, k2, message, sizeof message, cmac, iv);
  Bytes mac;
  for (int i = 0; i < 8; ++i) mac.push_back(cmac[2 * i + 1]);
  return mac;
}

// An array with the filling on all of its 69 bytes, and whether it still has that from some index on.
struct Output {
  Bytes bytes = Bytes(room, filling);

  bool isLeftAlone(std::size_t from = 0) const {
    return std::all_of(bytes.begin() + static_cast<long>(from), bytes.end(),
                       [](unsigned char byte) { return byte == filling; });
  }
  // Holds these bytes and nothing behind them, or nothing at all.
  void checkHolds(bool holds, const Bytes& expected) const {
    check(isLeftAlone(holds ? expected.size() : 0), "nothing else is written");
    if (holds) check(std::equal(expected.begin(), expected.end(), bytes.begin()), "the data of the reply");
  }
};

const Reply& last() {
  static const Reply none;
  return replies.empty() ? none : replies.back();
}

// ---- the operations

void readVersion(SAMChannel& channel, unsigned char size) {
  Output out;
  out.bytes.resize(256, filling);
  std::vector<char> serial(out.bytes.begin(), out.bytes.end());
  long status = 77;
  const bool read = channel.getVersion(serial.data(), status, static_cast<char>(size));
  const Bytes& r = last().bytes;
  const bool answered = last().status == SCARD_S_SUCCESS && last().length >= 5;
  const bool matches = r[0] == 4 && r[1] == 1 && r[2] == 1 && r[3] >= 3 && r[4] >= 2 && r[7] == 4 &&
                       r[8] == 1 && r[9] == 1 && r[10] >= 3 && r[11] >= 2;
  check(read == (answered && matches), "the version's result");
  if (last().status != SCARD_S_SUCCESS) check(status == 77, "the version's status is left alone");
  if (answered) check(status == (matches ? 0 : -1), "the version's status");
  Bytes expected(size, 0);
  if (read) expected.resize(std::max<std::size_t>(size, 7), 0);
  if (read) std::copy_n(r.begin() + 14, 7, expected.begin());
  out.bytes.assign(serial.begin(), serial.end());
  out.checkHolds(true, expected);
}

void authenticate(SAMChannel& channel, unsigned char length) {
  Bytes data(length, 0xA0);
  Output out;
  const bool done = channel.authenticatePICC(1, 2, data.data(), out.bytes.data(), data.size());
  const bool accepted = last().status == SCARD_S_SUCCESS && last().length == 34 && last().bytes[32] == 0x90;
  check(done == (length <= 61 && accepted), "the first step's result");
  const bool hasAnswer = done && (last().bytes[33] == 0xAF || last().bytes[33] == 0x00);
  out.checkHolds(hasAnswer, last().first(32));
}

void authenticateDiversified(SAMChannel& channel, unsigned char /*argument*/) {
  Bytes challenge(16, 0xA0);
  Bytes uid(7, 0xB0);
  Output out;
  const bool done = channel.authenticatePICC_Div(1, 2, challenge.data(), uid.data(), out.bytes.data());
  check(done == (last().status == SCARD_S_SUCCESS && last().length == 34 && last().bytes[32] == 0x90),
        "the diversified step's result");
  const bool hasAnswer = done && (last().bytes[33] == 0xAF || last().bytes[33] == 0x00);
  out.checkHolds(hasAnswer, last().first(32));
}

void finishAuthentication(SAMChannel& channel, unsigned char length) {
  Bytes data(length, 0xA0);
  check(channel.authenticatePICC(data.data(), data.size()) == (length <= 64 && last().isDone(0)),
        "the second step's result");
}

void changeKey(SAMChannel& channel, unsigned char argument) {
  unsigned char access[4] = {1, 2, 3, 4};
  Output out;
  unsigned char length = 77;
  const bool done = channel.changeKeyMIFARE(out.bytes.data(), length, access, argument, 2, 3, 4);
  check(done == last().isDone(6) && length == (done ? 6 : 77), "the key change's result");
  out.checkHolds(done, last().first(6));
}

void decipher(SAMChannel& channel, unsigned char inLength) {
  std::vector<char> in(inLength, 'x');
  std::vector<char> plain(room, static_cast<char>(filling));
  char length = 77;
  const bool done = channel.decipherOfflineData(in.data(), plain.data(), length, static_cast<char>(inLength));
  check(done == last().isDone(16) && length == (done ? 16 : 77), "the deciphering's result");
  Output{Bytes(plain.begin(), plain.end())}.checkHolds(done, last().first(16));
}

void activate(SAMChannel& channel, unsigned char divLength) {
  std::vector<char> divInput(divLength, 'x');
  const bool done = channel.activateOfflineKey(divInput.data(), static_cast<char>(divLength), 1, 2);
  check(done == last().isDone(0), "the activation's result");
}

void dump(SAMChannel& channel, unsigned char /*argument*/) {
  Output out;
  unsigned long length = 77;
  const bool done = channel.dumpSessionKey(out.bytes.data(), length);
  check(done == last().isDone(16) && length == (done ? 16 : 77), "the dump's result");
  out.checkHolds(done, last().first(16));
}

void generateMac(SAMChannel& channel, unsigned char length) {
  Bytes data(length, 0xA0);
  Output out;
  unsigned long outLength = 77;
  const bool done = channel.generateMAC(data.data(), data.size(), out.bytes.data(), outLength);
  check(done == (length <= 63 && last().status == SCARD_S_SUCCESS) && outLength == 77, "the MAC's result");
  out.checkHolds(false, {});
}

// How far an unlock went, and its status there.
void unlock(SAMChannel& channel, unsigned char /*argument*/) {
  long status = 0;
  const bool unlocked = channel.unlock(the_key, status, 16);
  const std::size_t steps = replies.size();
  check(steps >= 1 && steps <= 3, "one to three steps");
  for (std::size_t step = 0; step + 1 < steps; ++step)
    check(replies[step].status == SCARD_S_SUCCESS && replies[step].endsWith(0x90, 0xAF), "a step goes on");
  check(steps < 2 || replies[0].length == 14, "the length of the first step");
  check(steps < 3 || replies[1].hasRightMac, "the module's MAC");
  if (last().status != SCARD_S_SUCCESS)
    check(!unlocked && status == last().status, "a PC/SC status");
  else if (last().length < 3)
    check(!unlocked && status == (steps == 3 ? 0 : -3), "a short reply");
  else if (steps == 3)
    check(unlocked == last().endsWith(0x90, 0x00) && status == (unlocked ? 0 : -3), "the third step");
  else if (steps == 1 && last().length != 14)
    check(!unlocked && status == -2, "the length of the first reply");
  else
    check(!unlocked && !(last().endsWith(0x90, 0xAF) && last().hasRightMac) &&
              status == (last().endsWith(0x90, 0xAF) ? -2 : -1),
          "the status word or the MAC");
}

constexpr void (*operations[])(SAMChannel&, unsigned char) = {
    readVersion,
    authenticate,
    authenticateDiversified,
    finishAuthentication,
    changeKey,
    decipher,
    activate,
    dump,
    generateMac,
    unlock,
};

}  // namespace

// ---- PC/SC, with one reader and the replies of the input

extern "C" {

LONG SCardEstablishContext(DWORD /*scope*/, LPCVOID /*reserved1*/, LPCVOID /*reserved2*/,
                           LPSCARDCONTEXT context) {
  *context = 1;
  return SCARD_S_SUCCESS;
}

LONG SCardReleaseContext(SCARDCONTEXT /*context*/) { return SCARD_S_SUCCESS; }

LONG SCardListReaders(SCARDCONTEXT /*context*/, LPCSTR /*groups*/, LPSTR readers, LPDWORD length) {
  static char list[] = "ACS SAM\0";
  char* const start = list;
  std::memcpy(readers, &start, sizeof start);
  *length = sizeof list;
  return SCARD_S_SUCCESS;
}

LONG SCardFreeMemory(SCARDCONTEXT /*context*/, LPCVOID /*memory*/) { return SCARD_S_SUCCESS; }

LONG SCardConnect(SCARDCONTEXT /*context*/, LPCSTR /*reader*/, DWORD /*share*/, DWORD /*protocols*/,
                  LPSCARDHANDLE card, LPDWORD activeProtocol) {
  *card = 1;
  *activeProtocol = SCARD_PROTOCOL_T1;
  return SCARD_S_SUCCESS;
}

LONG SCardDisconnect(SCARDHANDLE /*card*/, DWORD /*disposition*/) { return SCARD_S_SUCCESS; }

LONG SCardBeginTransaction(SCARDHANDLE /*card*/) { return SCARD_S_SUCCESS; }

LONG SCardEndTransaction(SCARDHANDLE /*card*/, DWORD /*disposition*/) { return SCARD_S_SUCCESS; }

// A reply in the input: flags, its length, its bytes. Flag 1: the exchange fails; 2: it is said to be ten
// times as long; 4: it starts with the right MAC if that is asked for.
LONG SCardTransmit(SCARDHANDLE /*card*/, const SCARD_IO_REQUEST* /*send*/, LPCBYTE command,
                   DWORD commandLength, SCARD_IO_REQUEST* /*receive*/, LPBYTE out, LPDWORD outLength) {
  check(commandLength >= 4 && commandLength <= room && *outLength == room, "the sizes of an exchange");
  const unsigned char flags = input.byte();
  Bytes bytes = input.bytes(input.byte() % (room + 1));
  const bool isStep2 = commandLength == 26 && command[1] == 0x10;
  const Bytes mac = isStep2 ? rightMac(command) : Bytes();
  if ((flags & 4) != 0 && bytes.size() >= mac.size()) std::copy(mac.begin(), mac.end(), bytes.begin());
  Reply reply;
  reply.status = (flags & 1) != 0 ? SCARD_E_NOT_TRANSACTED : SCARD_S_SUCCESS;
  *outLength = (flags & 2) != 0 ? 10 * bytes.size() : bytes.size();
  reply.length = std::min<std::size_t>(*outLength, room);
  std::copy(bytes.begin(), bytes.end(), reply.bytes.begin());
  reply.hasRightMac = isStep2 && reply.first(8) == mac;
  std::copy(bytes.begin(), bytes.end(), out);
  replies.push_back(reply);
  return reply.status;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input = {data, size};
  replies.clear();
  SAMChannel channel;
  channel.connect();
  const unsigned char operation = input.byte();
  const unsigned char argument = input.byte();
  operations[operation % std::size(operations)](channel, argument);
  return 0;
}

}  // extern "C"
