#include "Faults.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace mvx2sim {

namespace {

using Numbers = std::vector<std::size_t>;

// Longer replies than any short APDU has, and delays longer than anybody waits, are slips of the pen.
constexpr std::size_t max_length = 1024;
constexpr std::size_t max_delay = 600000;
constexpr std::size_t max_count = 1000000;
constexpr std::size_t status_word = 2;

void setByte(Bytes& bytes, std::size_t index, std::size_t value) {
  if (index < bytes.size()) bytes[index] = static_cast<unsigned char>(value);
}

void fail(Exchange& exchange, const Numbers& /*numbers*/) { exchange.failed = true; }

void delay(Exchange& exchange, const Numbers& numbers) {
  exchange.delayMilliseconds += static_cast<unsigned>(numbers[0]);
}

void setFirst(Exchange& exchange, const Numbers& numbers) { setByte(exchange.reply, 0, numbers[0]); }

void setAny(Exchange& exchange, const Numbers& numbers) { setByte(exchange.reply, numbers[0], numbers[1]); }

void setStatusWord(Exchange& exchange, const Numbers& numbers) {
  const std::size_t size = exchange.reply.size();
  if (size < status_word) return;
  setByte(exchange.reply, size - 2, numbers[0] >> 8U);
  setByte(exchange.reply, size - 1, numbers[0] & 0xFFU);
}

void resizeData(Exchange& exchange, const Numbers& numbers) {
  Bytes& reply = exchange.reply;
  if (reply.size() < status_word) return;
  const Bytes status(reply.end() - status_word, reply.end());
  reply.resize(reply.size() - status_word);
  reply.resize(numbers[0]);
  reply.insert(reply.end(), status.begin(), status.end());
}

void truncate(Exchange& exchange, const Numbers& numbers) {
  exchange.reply.resize(std::min(exchange.reply.size(), numbers[0]));
}

void extend(Exchange& exchange, const Numbers& numbers) {
  exchange.reply.resize(std::max(exchange.reply.size(), numbers[0]));
}

void spoilVersion(Exchange& exchange, const Numbers& /*numbers*/) { setByte(exchange.reply, 3, 0); }

void spoilProof(Exchange& exchange, const Numbers& /*numbers*/) {
  if (!exchange.reply.empty()) exchange.reply[0] ^= 0xFFU;
}

struct Parameter {
  int base;
  std::size_t max;
};

std::optional<std::size_t> parse(const std::string& word, const Parameter& parameter) {
  const auto number = parseInteger(word, parameter.base);
  if (!number || *number < 0) return std::nullopt;
  const auto size = static_cast<std::size_t>(*number);
  return size <= parameter.max ? std::make_optional(size) : std::nullopt;
}

}  // namespace

struct Faults::Kind {
  const char* name;
  Occasion occasion;
  void (*spoil)(Exchange&, const Numbers&);
  std::vector<Parameter> parameters;
};

const Faults::Kind* Faults::find(const std::string& name) {
  static const std::vector<Kind> kinds = {
      {"transmit", Occasion::any, fail, {}},
      {"delay", Occasion::any, delay, {{10, max_delay}}},
      {"first", Occasion::any, setFirst, {{16, 0xFF}}},
      {"byte", Occasion::any, setAny, {{10, max_length}, {16, 0xFF}}},
      {"sw", Occasion::any, setStatusWord, {{16, 0xFFFF}}},
      {"data", Occasion::any, resizeData, {{10, max_length}}},
      {"truncate", Occasion::any, truncate, {{10, max_length}}},
      {"extend", Occasion::any, extend, {{10, max_length}}},
      {"version", Occasion::version, spoilVersion, {}},
      {"mac", Occasion::unlockProof, spoilProof, {}},
  };
  const auto kind =
      std::find_if(kinds.begin(), kinds.end(), [&name](const Kind& entry) { return name == entry.name; });
  return kind == kinds.end() ? nullptr : &*kind;
}

bool Faults::set(const std::vector<std::string>& words) {
  if (words == std::vector<std::string>{"clear"}) {
    m_faults.clear();
    return true;
  }
  const Kind* const kind = words.empty() ? nullptr : find(words.front());
  if (kind == nullptr) return false;

  // The kind's own numbers, then the two that may be left out.
  std::vector<Parameter> parameters = kind->parameters;
  auto word = words.begin() + 1;
  Fault fault{kind, {}, 1, 0};
  for (const Parameter& parameter : parameters) {
    const auto number = word == words.end() ? std::nullopt : parse(*word++, parameter);
    if (!number) return false;
    fault.numbers.push_back(*number);
  }
  const Parameter counter{10, max_count};
  if (word != words.end() && *word != "after") {
    const auto count = parse(*word++, counter);
    if (!count || *count == 0) return false;
    fault.count = *count;
  }
  if (word != words.end()) {
    if (*word != "after" || std::distance(word, words.end()) != 2) return false;
    const auto after = parse(*(word + 1), counter);
    if (!after) return false;
    fault.after = *after;
  }
  m_faults.push_back(fault);
  return true;
}

void Faults::apply(Occasion occasion, Exchange& exchange) {
  for (Fault& fault : m_faults) {
    if (fault.kind->occasion != Occasion::any && fault.kind->occasion != occasion) continue;
    if (fault.after > 0) {
      --fault.after;
      continue;
    }
    fault.kind->spoil(exchange, fault.numbers);
    --fault.count;
  }
  const auto isSpent = [](const Fault& fault) { return fault.count == 0; };
  m_faults.erase(std::remove_if(m_faults.begin(), m_faults.end(), isSpent), m_faults.end());
}

}  // namespace mvx2sim
