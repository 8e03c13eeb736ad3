// A card reader with something in it, as a driver shows it to the PC/SC daemon.
//
// Plain state machine: no input or output, no thread, no clock, no lock.
#ifndef MVX2SIM_MODEL_READER_H
#define MVX2SIM_MODEL_READER_H

#include "Faults.h"
#include "Sam.h"
#include "bytes.h"

#include <memory>
#include <optional>
#include <string>

namespace mvx2sim {

class Reader {
 public:
  Reader() = default;
  Reader(const Reader&) = delete;
  Reader(Reader&&) = delete;
  Reader& operator=(const Reader&) = delete;
  Reader& operator=(Reader&&) = delete;
  virtual ~Reader() = default;

  bool cardPresent() const { return m_cardPresent; }

  virtual Bytes answerToReset() const = 0;

  // The card loses what it keeps only while it has power.
  virtual void powerOff() {}

  // One APDU, with the faults that are set. Call it only while a card is present.
  Exchange transmit(const Bytes& apdu);

  // One line of control and its reply, which is "ERR" and a reason when the line was not carried out:
  //
  //   get NAME           the value
  //   set NAME VALUE     "OK"; the value is all that follows the name
  //   fault ...          "OK"; see Faults::set()
  //   card in | out      "OK"; as PC/SC sees the reader's slot
  //
  // "get transmits" tells how many APDUs came, on every reader; the other names are the reader's own.
  std::string control(const std::string& line);

 protected:
  virtual Bytes answer(const Bytes& apdu, Occasion& occasion) = 0;
  virtual std::optional<std::string> get(const std::string& name) const = 0;
  virtual bool set(const std::string& name, const std::string& value) = 0;

 private:
  std::string controlCard(const std::string& direction);
  std::string controlSet(const std::string& line);

  Faults m_faults;
  bool m_cardPresent = true;
  unsigned long m_transmits = 0;
};

std::unique_ptr<Reader> makeTerminalReader();
std::unique_ptr<Reader> makeSamReader(const SamSettings& settings);

}  // namespace mvx2sim

#endif
