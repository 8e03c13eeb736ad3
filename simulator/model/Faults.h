// What a test lets go wrong between a reader and the one who uses it.
#ifndef MVX2SIM_MODEL_FAULTS_H
#define MVX2SIM_MODEL_FAULTS_H

#include "bytes.h"

#include <string>
#include <vector>

namespace mvx2sim {

// What a reader answered; a few faults wait for a certain one.
enum class Occasion { any, version, unlockProof };

// One exchange as the reader's user sees it.
struct Exchange {
  bool failed = false;
  unsigned delayMilliseconds = 0;
  Bytes reply;
};

// The faults that are set, in the order in which they were set. A fault goes away after its count of
// exchanges.
class Faults {
 public:
  // The words after "fault": "clear", or a kind with its numbers, then optionally a count (1 when left out),
  // then optionally "after" and how many exchanges it lets pass first. Returns whether they were understood.
  //
  //   transmit                 the exchange fails
  //   delay MILLISECONDS       the reply comes late
  //   first XX                 the reply's first byte is XX (hexadecimal)
  //   byte INDEX XX            the reply's byte INDEX, counted from 0, is XX
  //   sw XXXX                  the reply's last two bytes are XXXX
  //   data LENGTH              the reply has LENGTH bytes before its last two (cut, or filled up with 00)
  //   truncate LENGTH          the reply is cut to LENGTH bytes
  //   extend LENGTH            the reply is filled up with 00 to LENGTH bytes
  //   version                  a version record does not match: its fourth byte is 00
  //   mac                      the module's proof in an unlock is wrong in its first byte
  bool set(const std::vector<std::string>& words);

  void apply(Occasion occasion, Exchange& exchange);

 private:
  struct Kind;
  struct Fault {
    const Kind* kind;
    std::vector<std::size_t> numbers;
    std::size_t count;
    std::size_t after;
  };

  static const Kind* find(const std::string& name);

  std::vector<Fault> m_faults;
};

}  // namespace mvx2sim

#endif
