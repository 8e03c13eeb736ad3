// A facade on the scripted stand-in, and a channel that fails from the inside.
#ifndef MVX2_TESTS_FACADE_FIXTURE_H
#define MVX2_TESTS_FACADE_FIXTURE_H

#include <mvx2/Channel.h>
#include <mvx2/MVX2Interfaces.h>

#include "support/scripted_pcsc.h"

#include <gtest/gtest.h>

#include <string>

namespace mvx2test {

class ConnectedFacade : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Connects, and forgets the exchanges of that.
  void connect();
  // Puts a channel into the facade whose exchanges all throw std::runtime_error("no luck"). Nothing that
  // PC/SC does makes an exchange throw, so this is how a command is made to fail.
  void breakChannel();
  // Whether the channel in the facade is another than the broken one.
  bool hasNewChannel() const;

  ScriptedPcsc& pcsc = ScriptedPcsc::instance();
  velmorin::MVX2Interfaces* facade = nullptr;
};

}  // namespace mvx2test

#endif
