#include "sam/exchange.h"

#include <mvx2/SAMChannel.h>

#include <algorithm>

namespace mvx2 {

long exchange(SAMChannel& channel, unsigned char ins, unsigned char p1, unsigned char* data,
              unsigned long dataLength, Le le, SamReply& reply) {
  const long status = channel.APDUTransaction(data, dataLength, reply.bytes, reply.length, 0x00, p1, ins,
                                              0x00, le == Le::zero, 0x80);
  // A derived channel may report any length.
  reply.length = std::min<unsigned long>(reply.length, sizeof reply.bytes);
  return status;
}

}  // namespace mvx2
