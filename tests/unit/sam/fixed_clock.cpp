#include "fixed_clock.h"

#include <array>

namespace mvx2test {

FixedClock& FixedClock::instance() {
  static FixedClock clock;
  return clock;
}

void FixedClock::reset() {
  now = 1700000000;
  hasText = true;
}

}  // namespace mvx2test

extern "C" {

std::time_t time(std::time_t* out) noexcept {
  const std::time_t now = mvx2test::FixedClock::instance().now;
  if (out != nullptr) *out = now;
  return now;
}

// In UTC, whatever the machine's time zone.
char* ctime(const std::time_t* time) noexcept {
  static std::array<char, 26> text;
  if (!mvx2test::FixedClock::instance().hasText) return nullptr;
  std::tm fields{};
  return asctime_r(gmtime_r(time, &fields), text.data());
}

}  // extern "C"
