// The link to the module: its reader, the APDU exchange, the version record.
#include <mvx2/SAMChannel.h>

#include "channel/readers.h"
#include "crypto/secure.h"
#include "sam/exchange.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t header_size = 4;
constexpr std::size_t serial_size = 7;

// Lays a command out and returns its length. The data fits.
std::size_t layOut(unsigned char* command, const unsigned char* data, std::size_t dataLength,
                   unsigned char le, bool sendLe) {
  std::size_t length = header_size;
  if (dataLength > 0) {
    command[length++] = static_cast<unsigned char>(dataLength);
    std::copy_n(data, dataLength, command + length);
    length += dataLength;
  }
  if (sendLe) command[length++] = le;
  return length;
}

// The record holds two blocks of one shape, of the hardware and, from byte 7, of the software.
bool recordMatches(const unsigned char* record) {
  return record[0] == 0x04 && record[7] == 0x04 &&  // vendor
         record[1] == 0x01 && record[2] == 0x01 &&  // type and subtype
         record[8] == 0x01 && record[9] == 0x01 &&  //
         record[3] > 0x02 && record[4] > 0x01 &&    // major and minor version
         record[10] > 0x02 && record[11] > 0x01;
}

}  // namespace

SAMChannel::SAMChannel() = default;

SAMChannel::~SAMChannel() {
  delete m_ioRequest;
  SCardDisconnect(m_card, SCARD_LEAVE_CARD);
  SCardReleaseContext(m_context);
}

std::string SAMChannel::mvx2NoFormattedTransaction(const std::string& /*request*/) { return {}; }

std::string SAMChannel::mvx2APDUTransaction(const char* /*data*/, int /*length*/) { return {}; }

long SAMChannel::connect() {
  m_readersLength = SCARD_AUTOALLOCATE;
  m_connected = 0;
  delete std::exchange(m_ioRequest, nullptr);
  m_ioRequest = new SCARD_IO_REQUEST{0, 0};

  LONG status = SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context);
  if (status != SCARD_S_SUCCESS) return status;
  char* list = nullptr;
  status = SCardListReaders(m_context, nullptr, reinterpret_cast<char*>(&list), &m_readersLength);
  if (status != SCARD_S_SUCCESS) return status;
  // An empty list is not handed back.
  if (list == nullptr || *list == '\0') return SCARD_S_SUCCESS;

  const char* const reader = mvx2::lastName(list, mvx2::isSamReader);
  if (reader != nullptr) {
    status = connectReader(reader);
    // Nor is the list on this path: the sequence of PC/SC calls is part of the interface.
    if (status != SCARD_S_SUCCESS) return status;
  }
  return SCardFreeMemory(m_context, list);
}

long SAMChannel::connectReader(const char* name) {
  DWORD activeProtocol = SCARD_PROTOCOL_UNDEFINED;
  const LONG status = SCardConnect(m_context, name, SCARD_SHARE_SHARED, SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1,
                                   &m_card, &activeProtocol);
  if (status != SCARD_S_SUCCESS) return status;
  const bool isT0OrT1 = activeProtocol == SCARD_PROTOCOL_T0 || activeProtocol == SCARD_PROTOCOL_T1;
  m_ioRequest->dwProtocol = activeProtocol;
  m_ioRequest->cbPciLength = isT0OrT1 ? 8 : 0;
  m_connected = 1;
  return status;
}

long SAMChannel::disconnect() {
  const LONG status = SCardDisconnect(m_card, SCARD_LEAVE_CARD);
  return status != SCARD_S_SUCCESS ? status : SCardReleaseContext(m_context);
}

bool SAMChannel::isConnected() { return m_connected != 0; }

long SAMChannel::APDUTransaction(unsigned char* data, unsigned long dataLength, unsigned char* response,
                                 unsigned long& responseLength, unsigned char p2, unsigned char p1,
                                 unsigned char ins, unsigned char le, bool sendLe, unsigned char cla) {
  const unsigned long room = mvx2::sam_buffer_size - header_size - 1 - (sendLe ? 1 : 0);
  if (dataLength > room || (data == nullptr && dataLength > 0)) return SCARD_E_INVALID_PARAMETER;

  unsigned char command[mvx2::sam_buffer_size] = {cla, ins, p1, p2};
  unsigned char reply[mvx2::sam_buffer_size] = {};
  const mvx2::Wiper wipeCommand(command);
  const mvx2::Wiper wipeReply(reply);
  const LONG begun = SCardBeginTransaction(m_card);
  if (begun != SCARD_S_SUCCESS) return begun;

  DWORD replyLength = sizeof reply;
  const LONG transmitted =
      SCardTransmit(m_card, m_ioRequest, command, layOut(command, data, dataLength, le, sendLe), m_ioRequest,
                    reply, &replyLength);
  // With SCARD_E_INSUFFICIENT_BUFFER PC/SC leaves the length that it would have needed.
  responseLength = std::min<DWORD>(replyLength, sizeof reply);
  std::copy_n(reply, responseLength, response);
  const LONG ended = SCardEndTransaction(m_card, SCARD_LEAVE_CARD);
  return transmitted != SCARD_S_SUCCESS ? transmitted : ended;
}

bool SAMChannel::getVersion(char* out, long& status, char outSize) {
  // Going on after a failed connect, and only then, is intended: the call that connects reads no version.
  if (m_connected == 0 && connect() == SCARD_S_SUCCESS) return false;
  std::memset(out, 0, static_cast<unsigned char>(outSize));
  mvx2::SamReply reply;
  if (mvx2::exchange(*this, 0x60, 0x00, nullptr, 0, mvx2::Le::zero, reply) != SCARD_S_SUCCESS) return false;
  status = 0;
  if (reply.length < 5) return false;
  if (!recordMatches(reply.bytes)) {
    status = -1;
    return false;
  }
  std::copy_n(reply.bytes + 14, serial_size, out);
  return true;
}
