// Random numbers that a test chooses. A program that links this defines fopen() and fclose(), which then win
// over those of the C library: "/dev/urandom" is scripted, every other file is opened as usual.
#ifndef MVX2_TESTS_FIXED_RANDOM_H
#define MVX2_TESTS_FIXED_RANDOM_H

#include "support/scripted_pcsc.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace mvx2test {

class FixedRandom {
 public:
  // The one of the process; reset it at the start of each test.
  static FixedRandom& instance();
  void reset();

  // What the coming openings of "/dev/urandom" give, in order. When the script is used up: the real one.
  void give(const Bytes& bytes) { script.emplace_back(bytes); }
  void cannotBeOpened() { script.emplace_back(std::nullopt); }

  int openings = 0;               // of "/dev/urandom" since reset()
  int open = 0;                   // not closed yet
  std::string mode;               // of the last opening
  std::size_t largestBuffer = 0;  // of a stream when it was closed, in bytes
  std::deque<std::optional<Bytes>> script;
  std::deque<Bytes> given;  // what the open streams read from
};

}  // namespace mvx2test

#endif
