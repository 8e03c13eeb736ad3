// The reader that a terminal shows to its host: text and raw commands travel in reader commands of class FF,
// and what the terminal answered is fetched with a second one.
#include "Reader.h"
#include "Terminal.h"

#include <algorithm>
#include <utility>

namespace mvx2sim {

namespace {

constexpr std::size_t header_size = 5;

const Bytes wrong_length = {0x67, 0x00};
const Bytes nothing_waits = {0x69, 0x85};
const Bytes wrong_parameters = {0x6B, 0x00};
const Bytes wrong_instruction = {0x6D, 0x00};
const Bytes wrong_class = {0x6E, 0x00};

class TerminalReader : public Reader {
 public:
  // A contact-less card without historical bytes, as a PC/SC reader shows it: T=0, then T=1.
  Bytes answerToReset() const override { return {0x3B, 0x80, 0x80, 0x01, 0x01}; }

 protected:
  Bytes answer(const Bytes& apdu, Occasion& occasion) override;
  std::optional<std::string> get(const std::string& name) const override { return m_terminal.get(name); }
  bool set(const std::string& name, const std::string& value) override { return m_terminal.set(name, value); }

 private:
  Bytes carry(const Bytes& apdu);
  Bytes fetch(const Bytes& apdu);

  Terminal m_terminal;
  Bytes m_waiting;
};

Bytes TerminalReader::answer(const Bytes& apdu, Occasion& /*occasion*/) {
  if (apdu.size() < header_size) return wrong_length;
  if (apdu[0] != 0xFF) return wrong_class;
  if (apdu[1] == 0x00) return carry(apdu);
  if (apdu[1] == 0xC0) return fetch(apdu);
  return wrong_instruction;
}

// FF 00 P1 00 Lc data: the bytes for the terminal, as text (P1 00) or raw (P1 01). The reply 61 n announces
// the terminal's answer.
Bytes TerminalReader::carry(const Bytes& apdu) {
  if (apdu[2] > 0x01 || apdu[3] != 0x00) return wrong_parameters;
  if (apdu.size() != header_size + apdu[4]) return wrong_length;
  const Bytes carried(apdu.begin() + header_size, apdu.end());
  m_waiting = apdu[2] == 0x00 ? m_terminal.text(carried) : m_terminal.raw(carried);
  return {0x61, static_cast<unsigned char>(m_waiting.size())};
}

// FF C0 00 00 n: the first n bytes of the answer that waits (all of them when n is 0) and 90 00.
Bytes TerminalReader::fetch(const Bytes& apdu) {
  if (apdu[2] != 0x00 || apdu[3] != 0x00) return wrong_parameters;
  if (apdu.size() != header_size) return wrong_length;
  if (m_waiting.empty()) return nothing_waits;
  Bytes reply = std::exchange(m_waiting, {});
  if (apdu[4] != 0) reply.resize(std::min<std::size_t>(reply.size(), apdu[4]));
  reply.insert(reply.end(), {0x90, 0x00});
  return reply;
}

}  // namespace

std::unique_ptr<Reader> makeTerminalReader() { return std::make_unique<TerminalReader>(); }

}  // namespace mvx2sim
