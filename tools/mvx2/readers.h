// The PC/SC readers of this machine: which one the library would take, and what is wrong when it cannot.
#ifndef MVX2TOOL_READERS_H
#define MVX2TOOL_READERS_H

#include "errors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mvx2tool {

// As MVX2Interfaces::getInstance() takes it.
enum class Select : int { any = -1, other = 0, mvx3 = 1 };

struct ReaderList {
  std::uint32_t status = 0;  // of PC/SC; without daemon or readers it says so
  std::vector<std::string> names = {};
};

ReaderList listReaders();

bool isTerminal(const std::string& name, Select select);
bool isSam(const std::string& name);
// What the library would use the reader for, for example "terminal (mvx3)".
std::string roleOf(const std::string& name);

// Those that fit, in the order in which the library would try them: the last listed comes first.
std::vector<std::string> terminals(const ReaderList& list, Select select);
std::vector<std::string> sams(const ReaderList& list);

// One try of its own to reach the terminal, step by step. To be made while no channel of this process is
// open: a transaction that one left open would keep this one waiting.
struct Probe {
  std::uint32_t status = 0;
  std::string reader = {};
  bool connected = false;
  std::optional<std::string> reply = {};  // the reader's own reply when it is not 61 xx
};

Probe probeTerminal(Select select);

// Why there is no answer, as a problem: no daemon, no reader, or no answer.
Problem diagnose(const std::string& operation, Select select);

}  // namespace mvx2tool

#endif
