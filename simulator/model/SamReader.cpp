#include "Reader.h"

namespace mvx2sim {

namespace {

class SamReader : public Reader {
 public:
  explicit SamReader(SamSettings settings) : m_settings(std::move(settings)) {}

  // A card with contacts that speaks T=1 and shows no historical bytes.
  Bytes answerToReset() const override { return {0x3B, 0x80, 0x01, 0x81}; }

 protected:
  Bytes answer(const Bytes& /*apdu*/, Occasion& /*occasion*/) override { return {0x6D, 0x00}; }
  std::optional<std::string> get(const std::string& name) const override {
    if (name == "key") return printHex(m_settings.key);
    if (name == "serial") return printHex(m_settings.serial);
    return std::nullopt;
  }
  bool set(const std::string& /*name*/, const std::string& /*value*/) override { return false; }

 private:
  SamSettings m_settings;
};

}  // namespace

std::unique_ptr<Reader> makeSamReader(const SamSettings& settings) {
  return std::make_unique<SamReader>(settings);
}

}  // namespace mvx2sim
