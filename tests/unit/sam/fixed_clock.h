// A clock that a test sets. A program that links this defines time() and ctime(), which then win over those
// of the C library.
#ifndef MVX2_TESTS_FIXED_CLOCK_H
#define MVX2_TESTS_FIXED_CLOCK_H

#include <ctime>

namespace mvx2test {

struct FixedClock {
  // The one of the process; reset it at the start of each test: 2023, November 14th, 22:13:20 UTC, a Tuesday.
  static FixedClock& instance();
  void reset();

  std::time_t now = 0;
  bool hasText = true;  // whether ctime() succeeds
};

}  // namespace mvx2test

#endif
