// A fixture with a channel that is connected to the scripted module.
#ifndef MVX2_TESTS_CONNECTED_CHANNEL_H
#define MVX2_TESTS_CONNECTED_CHANNEL_H

#include <mvx2/SAMChannel.h>

#include "support/scripted_pcsc.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace mvx2test {

constexpr LONG a_failure = static_cast<LONG>(0x8010001DUL);
constexpr LONG another_failure = static_cast<LONG>(0x80100016UL);

using Calls = std::vector<std::string>;

class ConnectedChannel : public testing::Test {
 protected:
  void SetUp() override {
    pcsc.reset();
    pcsc.readers = {"ACS SAM 00 00"};
    ASSERT_EQ(channel.connect(), SCARD_S_SUCCESS);
    pcsc.calls.clear();
  }

  // The APDUs since connecting, "80 60 00 00 00" each.
  Calls sent() const {
    Calls texts;
    for (const Bytes& apdu : pcsc.apdus) texts.push_back(hex(apdu));
    return texts;
  }

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
  SAMChannel channel;
};

}  // namespace mvx2test

#endif
