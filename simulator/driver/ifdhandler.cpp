// The simulated readers as a driver of the PC/SC daemon: the C interface of <ifdhandler.h>, version 3.
#include "Slot.h"

#include "control_code.h"

#include <algorithm>
#include <cstring>

// A C header that does not say so, and the one thing of this module that the daemon is to find.
#pragma GCC visibility push(default)
extern "C" {
#include <ifdhandler.h>
}
#pragma GCC visibility pop

using mvx2sim::Bytes;
using mvx2sim::Exchange;
using mvx2sim::findSlot;
using mvx2sim::Slot;

namespace {

// How long the daemon's thread for a reader waits at most before it looks at the slot again.
constexpr int max_wait_milliseconds = 200;

// Writes what fits, or nothing: whether it was written.
bool put(const Bytes& bytes, DWORD capacity, unsigned char* out, DWORD* length) {
  const bool fits = bytes.size() <= capacity;
  *length = fits ? bytes.size() : 0;
  if (fits) std::copy(bytes.begin(), bytes.end(), out);
  return fits;
}

RESPONSECODE answer(const Bytes& value, PDWORD length, PUCHAR out) {
  return put(value, *length, out, length) ? IFD_SUCCESS : IFD_ERROR_INSUFFICIENT_BUFFER;
}

RESPONSECODE waitForEvent(DWORD lun, int timeout) {
  const Slot* const slot = findSlot(lun);
  if (slot == nullptr) return IFD_NO_SUCH_DEVICE;
  slot->wait(std::clamp(timeout, 0, max_wait_milliseconds));
  return IFD_SUCCESS;
}

RESPONSECODE stopWaiting(DWORD lun) {
  if (const Slot* const slot = findSlot(lun); slot != nullptr) slot->wake();
  return IFD_SUCCESS;
}

template <typename Function>
Bytes pointerBytes(Function function) {
  Bytes bytes(sizeof function);
  std::memcpy(bytes.data(), &function, sizeof function);
  return bytes;
}

}  // namespace

extern "C" {

// NOLINTNEXTLINE(readability-non-const-parameter): the signature is the interface's
RESPONSECODE IFDHCreateChannelByName(DWORD Lun, LPSTR DeviceName) {
  if (DeviceName == nullptr) return IFD_NO_SUCH_DEVICE;
  return mvx2sim::openSlot(Lun, DeviceName) == nullptr ? IFD_NO_SUCH_DEVICE : IFD_SUCCESS;
}

// The daemon asks for this one too; a simulated reader has a name and no channel number.
RESPONSECODE IFDHCreateChannel(DWORD /*Lun*/, DWORD /*Channel*/) { return IFD_NO_SUCH_DEVICE; }

RESPONSECODE IFDHCloseChannel(DWORD Lun) {
  if (Slot* const slot = findSlot(Lun); slot != nullptr) slot->powerOff();
  return IFD_SUCCESS;
}

RESPONSECODE IFDHGetCapabilities(DWORD Lun, DWORD Tag, PDWORD Length, PUCHAR Value) {
  Slot* const slot = findSlot(Lun);
  if (slot == nullptr) return IFD_NO_SUCH_DEVICE;
  switch (Tag) {
    case TAG_IFD_ATR:
      return answer(slot->powerUp(), Length, Value);
    case TAG_IFD_THREAD_SAFE:  // one reader's sleep must not hold another one up
    case TAG_IFD_SLOTS_NUMBER:
    case TAG_IFD_SIMULTANEOUS_ACCESS:
      return answer({1}, Length, Value);
    case TAG_IFD_POLLING_THREAD_WITH_TIMEOUT:
      return answer(pointerBytes(&waitForEvent), Length, Value);
    case TAG_IFD_STOP_POLLING_THREAD:
      return answer(pointerBytes(&stopWaiting), Length, Value);
    default:
      return IFD_ERROR_TAG;
  }
}

RESPONSECODE IFDHSetCapabilities(DWORD /*Lun*/, DWORD /*Tag*/, DWORD /*Length*/, PUCHAR /*Value*/) {
  return IFD_NOT_SUPPORTED;
}

RESPONSECODE IFDHSetProtocolParameters(DWORD /*Lun*/, DWORD /*Protocol*/, UCHAR /*Flags*/, UCHAR /*PTS1*/,
                                       UCHAR /*PTS2*/, UCHAR /*PTS3*/) {
  return IFD_SUCCESS;
}

RESPONSECODE IFDHPowerICC(DWORD Lun, DWORD Action, PUCHAR Atr, PDWORD AtrLength) {
  Slot* const slot = findSlot(Lun);
  if (slot == nullptr) return IFD_NO_SUCH_DEVICE;
  if (Action == IFD_POWER_DOWN) {
    slot->powerOff();
    if (AtrLength != nullptr) *AtrLength = 0;
    return IFD_SUCCESS;
  }
  if (!slot->cardPresent() || Atr == nullptr || AtrLength == nullptr) return IFD_ERROR_POWER_ACTION;
  return answer(slot->powerUp(), AtrLength, Atr);
}

RESPONSECODE IFDHTransmitToICC(DWORD Lun, SCARD_IO_HEADER /*SendPci*/, PUCHAR TxBuffer, DWORD TxLength,
                               PUCHAR RxBuffer, PDWORD RxLength, PSCARD_IO_HEADER /*RecvPci*/) {
  const DWORD capacity = *RxLength;
  *RxLength = 0;
  Slot* const slot = findSlot(Lun);
  if (slot == nullptr) return IFD_NO_SUCH_DEVICE;
  if (!slot->cardPresent()) return IFD_ICC_NOT_PRESENT;
  const Exchange exchange = slot->transmit(Bytes(TxBuffer, TxBuffer + TxLength));
  if (exchange.failed) return IFD_COMMUNICATION_ERROR;
  return put(exchange.reply, capacity, RxBuffer, RxLength) ? IFD_SUCCESS : IFD_ERROR_INSUFFICIENT_BUFFER;
}

RESPONSECODE IFDHControl(DWORD Lun, DWORD dwControlCode, PUCHAR TxBuffer, DWORD TxLength, PUCHAR RxBuffer,
                         DWORD RxLength, LPDWORD pdwBytesReturned) {
  *pdwBytesReturned = 0;
  Slot* const slot = findSlot(Lun);
  if (slot == nullptr) return IFD_NO_SUCH_DEVICE;
  if (dwControlCode != MVX2SIM_CONTROL_CODE) return IFD_ERROR_NOT_SUPPORTED;
  const std::string reply = slot->control(std::string(TxBuffer, TxBuffer + TxLength));
  slot->wake();
  const bool fits = put(Bytes(reply.begin(), reply.end()), RxLength, RxBuffer, pdwBytesReturned);
  return fits ? IFD_SUCCESS : IFD_ERROR_INSUFFICIENT_BUFFER;
}

RESPONSECODE IFDHICCPresence(DWORD Lun) {
  Slot* const slot = findSlot(Lun);
  if (slot == nullptr) return IFD_NO_SUCH_DEVICE;
  return slot->cardPresent() ? IFD_ICC_PRESENT : IFD_ICC_NOT_PRESENT;
}

}  // extern "C"
