// What the program of the page on threads shows, beside the simulator.
#include "support/programs.h"

#include <gtest/gtest.h>

namespace {

TEST(Threads, ReadOneTerminal) {
  const mvx2test::Ended ended = mvx2test::runLines(MVX2_EXAMPLE "threads");
  EXPECT_EQ(ended.out, "1250 1250\n");
  EXPECT_EQ(ended.exit, 0);
}

}  // namespace
