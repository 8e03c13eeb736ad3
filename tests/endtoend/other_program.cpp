// A second program that shares the reader: it connects, says so with a byte on its standard output, and
// transmits once it gets a byte on its standard input. It ends with 0 when the reader has answered.
#include <unistd.h>
#include <winscard.h>

#include <array>

namespace {

bool tellAndWait() {
  char byte = 'x';
  return write(STDOUT_FILENO, &byte, 1) == 1 && read(STDIN_FILENO, &byte, 1) == 1;
}

bool transmits(SCARDHANDLE card, const SCARD_IO_REQUEST& pci) {
  const std::array<unsigned char, 6> command = {0xFF, 0x00, 0x00, 0x00, 0x01, '\r'};
  std::array<unsigned char, 69> reply{};
  DWORD length = reply.size();
  return SCardTransmit(card, &pci, command.data(), command.size(), nullptr, reply.data(), &length) ==
         SCARD_S_SUCCESS;
}

}  // namespace

int main() {
  SCARDCONTEXT context = 0;
  SCARDHANDLE card = 0;
  SCARD_IO_REQUEST pci = {0, sizeof pci};
  if (SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context) != SCARD_S_SUCCESS) return 1;
  if (SCardConnect(context, "KRV MVX3 Terminal 00 00", SCARD_SHARE_SHARED,
                   SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &card, &pci.dwProtocol) != SCARD_S_SUCCESS)
    return 1;
  return tellAndWait() && transmits(card, pci) ? 0 : 1;
}
