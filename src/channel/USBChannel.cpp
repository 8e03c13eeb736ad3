#include <mvx2/MVX2Exception.h>
#include <mvx2/USBChannel.h>

#include "channel/readers.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace {

constexpr std::size_t header_size = 5;
constexpr std::size_t max_data = 64;
constexpr std::size_t buffer_size = header_size + max_data;

constexpr unsigned char answer_waits = 0x61;  // SW1 of a first reply; the second byte says how much waits

constexpr const char* in_constructor = "USBChannel";
constexpr const char* in_text_exchange = "mvx2NoFormattedTransaction";
constexpr const char* in_raw_exchange = "mvx2APDUTransaction";

[[noreturn]] void fail(const char* what, long code, const char* function, int line) {
  throw MVX2Exception(what, code, function, "USBChannel", line);
}

void check(LONG status, const char* call, const char* function, int line) {
  if (status != SCARD_S_SUCCESS) fail(call, status, function, line);
}

// The lines that the errors of one kind of exchange are reported with.
struct ErrorLines {
  const char* function;
  int transmit;
  int badResponse;
  int fetch;
};

struct Reply {
  unsigned char bytes[buffer_size];
  DWORD length = buffer_size;
};

LONG transmit(SCARDHANDLE card, SCARD_IO_REQUEST* pci, const unsigned char* command, std::size_t length,
              Reply& reply) {
  const LONG status = SCardTransmit(card, pci, command, length, pci, reply.bytes, &reply.length);
  // With SCARD_E_INSUFFICIENT_BUFFER PC/SC leaves the length that it would have needed.
  reply.length = std::min<DWORD>(reply.length, sizeof reply.bytes);
  return status;
}

// Carries the data to the terminal and fetches its answer, inside a reader transaction of the caller's.
std::string carry(SCARDHANDLE card, SCARD_IO_REQUEST* pci, unsigned char p1, const char* data,
                  std::size_t length, const ErrorLines& lines) {
  unsigned char command[buffer_size] = {0xFF, 0x00, p1, 0x00, static_cast<unsigned char>(length)};
  std::copy_n(data, length, command + header_size);
  Reply first;
  check(transmit(card, pci, command, header_size + length, first), "SCardTransmit", lines.function,
        lines.transmit);
  if (first.length < 2 || first.bytes[0] != answer_waits)
    fail("bad response", answer_waits, lines.function, lines.badResponse);

  const unsigned char waiting = first.bytes[1];
  if (waiting == 0) return {};
  const unsigned char fetch[header_size] = {0xFF, 0xC0, 0x00, 0x00, waiting};
  Reply answer;
  check(transmit(card, pci, fetch, sizeof fetch, answer), "SCardTransmit", lines.function, lines.fetch);
  return {answer.bytes, answer.bytes + answer.length};
}

// A list as SCardListReaders allocates it, freed on the paths that do not reach free().
class ReaderList {
 public:
  explicit ReaderList(SCARDCONTEXT context) : m_context(context) {}
  ReaderList(const ReaderList&) = delete;
  ReaderList(ReaderList&&) = delete;
  ReaderList& operator=(const ReaderList&) = delete;
  ReaderList& operator=(ReaderList&&) = delete;
  ~ReaderList() {
    if (m_names != nullptr) SCardFreeMemory(m_context, m_names);
  }

  LONG fetch() {
    auto length = SCARD_AUTOALLOCATE;
    return SCardListReaders(m_context, nullptr, reinterpret_cast<char*>(&m_names), &length);
  }
  const char* names() const { return m_names; }
  void leave() { m_names = nullptr; }
  LONG free() { return SCardFreeMemory(m_context, std::exchange(m_names, nullptr)); }

 private:
  SCARDCONTEXT m_context;
  char* m_names = nullptr;
};

}  // namespace

USBChannel::USBChannel(int readerSelect) {
  check(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context), "SCardEstablishContext",
        in_constructor, 26);
  try {
    connectReader(readerSelect);
  } catch (...) {
    // No destructor runs for an object that was never complete.
    if (m_sendPci != nullptr) SCardDisconnect(m_card, SCARD_LEAVE_CARD);
    delete m_sendPci;
    SCardReleaseContext(m_context);
    throw;
  }
}

void USBChannel::connectReader(int readerSelect) {
  ReaderList list(m_context);
  check(list.fetch(), "SCardListReaders", in_constructor, 30);
  if (list.names() == nullptr) fail("SCardListReaders", 0, in_constructor, 36);
  if (*list.names() == '\0') {
    // A channel without a card; an empty list is not handed back.
    list.leave();
    return;
  }

  const auto any = [](const char* /*name*/) { return true; };
  if (mvx2::lastName(list.names(), any) == nullptr) {
    check(list.free(), "SCardFreeMemory", in_constructor, 104);
    fail("Card reader not find", 0, in_constructor, 106);
  }
  DWORD activeProtocol = SCARD_PROTOCOL_UNDEFINED;
  const auto isOurs = [=](const char* name) { return mvx2::isTerminalReader(name, readerSelect); };
  const char* const accepted = mvx2::lastName(list.names(), isOurs);
  if (accepted != nullptr) {
    auto pci = std::make_unique<SCARD_IO_REQUEST>();
    check(SCardConnect(m_context, accepted, SCARD_SHARE_SHARED, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                       &m_card, &activeProtocol),
          "SCardConnect", in_constructor, 97);
    const bool isT0OrT1 = activeProtocol == SCARD_PROTOCOL_T0 || activeProtocol == SCARD_PROTOCOL_T1;
    pci->dwProtocol = activeProtocol;
    pci->cbPciLength = isT0OrT1 ? 8 : 0;
    m_sendPci = pci.release();
  }
  check(list.free(), "SCardFreeMemory", in_constructor, 112);
  if (activeProtocol == SCARD_PROTOCOL_UNDEFINED) fail("dwAP", 0, in_constructor, 114);
}

USBChannel::~USBChannel() {
  delete m_sendPci;
  SCardDisconnect(m_card, SCARD_LEAVE_CARD);
  SCardReleaseContext(m_context);
}

std::string USBChannel::mvx2NoFormattedTransaction(const std::string& request) {
  if (request.size() > max_data) return {};
  try {
    check(SCardBeginTransaction(m_card), "SCardBeginTransaction", in_text_exchange, 141);
    // A failure in here leaves the reader transaction open: it ends with the channel.
    std::string answer =
        carry(m_card, m_sendPci, 0x00, request.data(), request.size(), {in_text_exchange, 179, 176, 172});
    check(SCardEndTransaction(m_card, SCARD_LEAVE_CARD), "SCardEndTransaction", in_text_exchange, 183);
    return answer;
  } catch (const std::exception&) {
    return {};
  }
}

std::string USBChannel::mvx2APDUTransaction(const char* data, int length) {
  const bool fits = length >= 0 && static_cast<std::size_t>(length) <= max_data;
  if (!fits || (data == nullptr && length > 0)) throw std::exception();

  // This one error names the text exchange.
  check(SCardBeginTransaction(m_card), "SCardBeginTransaction", in_text_exchange, 210);
  std::string answer;
  bool failed = false;
  try {
    answer = carry(m_card, m_sendPci, 0x01, data, static_cast<std::size_t>(length),
                   {in_raw_exchange, 299, 294, 288});
  } catch (const std::exception&) {
    failed = true;
  }
  check(SCardEndTransaction(m_card, SCARD_LEAVE_CARD), "SCardEndTransaction", in_raw_exchange, 307);
  // What failed between the two is not passed on.
  if (failed) throw std::exception();
  return answer;
}
