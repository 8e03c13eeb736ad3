// A program of its own: only the first call of a method shows what its buffer is made as.
#include "unit/device/command_table.h"

#include <gtest/gtest.h>

namespace mvx2test {
namespace {

TEST(FirstCall, WithoutAChannelReturnsAnEmptyTextWhereTheBufferIsLeftAlone) {
  velmorin::MVX2Interfaces* const facade = velmorin::MVX2Interfaces::getInstance(0);
  for (const Command& command : commands())
    EXPECT_EQ(command.call(*facade).print, command.withoutChannel == unchanged ? "" : command.withoutChannel)
        << command.method;
  facade->releaseInstance();
}

}  // namespace
}  // namespace mvx2test
