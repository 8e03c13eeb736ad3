// The reader that holds the SAM: its APDUs reach the module as they are.
#include "Reader.h"
#include "Sam.h"

namespace mvx2sim {

namespace {

class SamReader : public Reader {
 public:
  explicit SamReader(const SamSettings& settings) : m_sam(settings) {}

  // A card with contacts that speaks T=1 and shows no historical bytes.
  Bytes answerToReset() const override { return {0x3B, 0x80, 0x01, 0x81}; }
  void powerOff() override { m_sam.powerOff(); }

 protected:
  Bytes answer(const Bytes& apdu, Occasion& occasion) override { return m_sam.answer(apdu, occasion); }
  std::optional<std::string> get(const std::string& name) const override { return m_sam.get(name); }
  bool set(const std::string& name, const std::string& value) override { return m_sam.set(name, value); }

 private:
  Sam m_sam;
};

}  // namespace

std::unique_ptr<Reader> makeSamReader(const SamSettings& settings) {
  return std::make_unique<SamReader>(settings);
}

}  // namespace mvx2sim
