// How the module's commands use SAMChannel::APDUTransaction().
#ifndef MVX2_SAM_EXCHANGE_H
#define MVX2_SAM_EXCHANGE_H

#include "crypto/secure.h"

#include <cstddef>

class SAMChannel;

namespace mvx2 {

// The room that APDUTransaction() needs for a reply, and the most that a command takes.
constexpr std::size_t sam_buffer_size = 69;

// A reply with its status word. The bytes behind its end are zero. Wiped when it goes: some carry a key.
struct SamReply {
  SamReply() = default;
  SamReply(const SamReply&) = delete;
  SamReply(SamReply&&) = delete;
  SamReply& operator=(const SamReply&) = delete;
  SamReply& operator=(SamReply&&) = delete;
  ~SamReply() { wipe(bytes, sizeof bytes); }

  // Whether the last two bytes are this status word. No reply shorter than that has any.
  bool endsWith(unsigned char sw1, unsigned char sw2) const {
    return length >= 2 && bytes[length - 2] == sw1 && bytes[length - 1] == sw2;
  }
  // Whether the reply is so many bytes of data and the status word 90 00.
  bool isDoneWith(std::size_t dataLength) const { return length == dataLength + 2 && endsWith(0x90, 0x00); }

  unsigned char bytes[sam_buffer_size] = {};
  unsigned long length = 0;  // at most the size of the array
};

enum class Le { absent, zero };

// Sends `80 ins p1 00` with the data and Le through the virtual function. Returns the PC/SC status.
long exchange(SAMChannel& channel, unsigned char ins, unsigned char p1, unsigned char* data,
              unsigned long dataLength, Le le, SamReply& reply);

}  // namespace mvx2

#endif
