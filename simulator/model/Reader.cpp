#include "Reader.h"

namespace mvx2sim {

namespace {

constexpr const char* ok = "OK";
constexpr const char* not_understood = "ERR not understood";

}  // namespace

Exchange Reader::transmit(const Bytes& apdu) {
  ++m_transmits;
  Exchange exchange;
  Occasion occasion = Occasion::any;
  exchange.reply = answer(apdu, occasion);
  m_faults.apply(occasion, exchange);
  return exchange;
}

std::string Reader::control(const std::string& line) {
  const std::vector<std::string> words = splitWords(line);
  if (words.size() < 2) return not_understood;
  if (words[0] == "set") return controlSet(line);
  if (words[0] == "fault") return m_faults.set({words.begin() + 1, words.end()}) ? ok : not_understood;
  if (words.size() != 2) return not_understood;
  if (words[0] == "card") return controlCard(words[1]);
  if (words[0] != "get") return not_understood;
  if (words[1] == "transmits") return std::to_string(m_transmits);
  return get(words[1]).value_or("ERR no such name");
}

std::string Reader::controlSet(const std::string& line) {
  const std::size_t name = line.find_first_not_of(' ', line.find(' '));
  const std::size_t blank = line.find(' ', name);
  const std::size_t value = line.find_first_not_of(' ', blank);
  const bool isEmpty = blank == std::string::npos || value == std::string::npos;
  const bool isSet = set(line.substr(name, blank - name), isEmpty ? "" : line.substr(value));
  return isSet ? ok : "ERR no such name, or a value out of its range";
}

std::string Reader::controlCard(const std::string& direction) {
  if (direction != "in" && direction != "out") return not_understood;
  m_cardPresent = direction == "in";
  return ok;
}

}  // namespace mvx2sim
