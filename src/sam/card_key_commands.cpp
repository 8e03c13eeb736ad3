// The commands on cards and keys: one exchange each.
#include <mvx2/SAMChannel.h>

#include "sam/exchange.h"

#include <algorithm>

using mvx2::exchange;
using mvx2::Le;
using mvx2::SamReply;

namespace {

// The first step of a card's authentication: hands the module's 32-byte answer for the card on.
bool beginAuthentication(SAMChannel& channel, unsigned char p1, unsigned char* data, unsigned long dataLength,
                         unsigned char* out) {
  SamReply reply;
  if (exchange(channel, 0x0A, p1, data, dataLength, Le::zero, reply) != SCARD_S_SUCCESS) return false;
  if (reply.length != 34 || reply.bytes[32] != 0x90) return false;
  // Another second byte still counts as success, without an answer.
  if (reply.bytes[33] == 0xAF || reply.bytes[33] == 0x00) std::copy_n(reply.bytes, 32, out);
  return true;
}

// A `char` length is 0 to 255 whether or not `char` is signed.
std::size_t lengthOf(char length) { return static_cast<unsigned char>(length); }

}  // namespace

bool SAMChannel::authenticatePICC(unsigned char keyNumber, unsigned char keyVersion, unsigned char* data,
                                  unsigned char* out, unsigned long dataLength) {
  unsigned char command[mvx2::sam_buffer_size] = {keyNumber, keyVersion};
  // What fits here and not into an APDU, APDUTransaction() refuses.
  if (dataLength > sizeof command - 2 || (data == nullptr && dataLength > 0)) return false;
  std::copy_n(data, dataLength, command + 2);
  return beginAuthentication(*this, 0x00, command, dataLength + 2, out);
}

bool SAMChannel::authenticatePICC_Div(unsigned char keyNumber, unsigned char keyVersion,
                                      unsigned char* cardChallenge, unsigned char* cardUid,
                                      unsigned char* out) {
  unsigned char command[25] = {keyNumber, keyVersion};
  std::copy_n(cardChallenge, 16, command + 2);
  std::copy_n(cardUid, 7, command + 18);
  return beginAuthentication(*this, 0x11, command, sizeof command, out);
}

bool SAMChannel::authenticatePICC(unsigned char* data, unsigned long dataLength) {
  SamReply reply;
  return exchange(*this, 0x0A, 0x00, data, dataLength, Le::absent, reply) == SCARD_S_SUCCESS &&
         reply.isDoneWith(0);
}

bool SAMChannel::changeKeyMIFARE(unsigned char* out, unsigned char& outLength, unsigned char* accessBytes,
                                 unsigned char a, unsigned char b, unsigned char c, unsigned char d) {
  unsigned char command[] = {
      c, b, d, accessBytes[0], accessBytes[1], accessBytes[2], accessBytes[3], a,
  };
  SamReply reply;
  if (exchange(*this, 0xC5, 0x02, command, sizeof command, Le::zero, reply) != SCARD_S_SUCCESS) return false;
  if (!reply.isDoneWith(6)) return false;
  std::copy_n(reply.bytes, 6, out);
  outLength = 6;
  return true;
}

bool SAMChannel::decipherOfflineData(char* in, char* out, char& outLength, char inLength) {
  unsigned char block[16] = {};
  std::copy_n(in, std::min(lengthOf(inLength), sizeof block), block);
  SamReply reply;
  if (exchange(*this, 0x0D, 0x00, block, sizeof block, Le::zero, reply) != SCARD_S_SUCCESS) return false;
  if (!reply.isDoneWith(16)) return false;
  std::copy_n(reply.bytes, 16, out);
  outLength = 16;
  return true;
}

bool SAMChannel::activateOfflineKey(char* divInput, char divLength, char keyVersion, char extra) {
  unsigned char command[9] = {0x10, static_cast<unsigned char>(keyVersion)};
  const std::size_t inputLength = lengthOf(divLength);
  std::copy_n(divInput, std::min(inputLength, sizeof command - 2), command + 2);
  if (inputLength == 4) command[6] = static_cast<unsigned char>(extra);
  SamReply reply;
  return exchange(*this, 0x01, 0x01, command, inputLength == 7 ? 9 : 7, Le::absent, reply) ==
             SCARD_S_SUCCESS &&
         reply.isDoneWith(0);
}

bool SAMChannel::dumpSessionKey(unsigned char* out, unsigned long& outLength) {
  SamReply reply;
  if (exchange(*this, 0xD5, 0x00, nullptr, 0, Le::zero, reply) != SCARD_S_SUCCESS) return false;
  if (!reply.isDoneWith(16)) return false;
  outLength = 16;
  std::copy_n(reply.bytes, 16, out);
  return true;
}

bool SAMChannel::generateMAC(unsigned char* data, unsigned long dataLength, unsigned char* /*out*/,
                             unsigned long& /*outLength*/) {
  SamReply notHandedBack;
  return exchange(*this, 0x7C, 0x00, data, dataLength, Le::zero, notHandedBack) == SCARD_S_SUCCESS;
}
