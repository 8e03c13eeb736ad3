#include "Slot.h"

#include <chrono>
#include <cstdlib>
#include <map>
#include <thread>
#include <utility>

namespace mvx2sim {

namespace {

struct Slots {
  std::mutex mutex;
  std::map<unsigned long, std::unique_ptr<Slot>> byLun;
};

// Never destroyed: a thread of the daemon may still be in a slot while the process ends.
Slots& slots() {
  static auto* const all = new Slots;
  return *all;
}

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// A key or serial number of the wrong size becomes all zero: mvx2-sim checks them before it starts a daemon.
Bytes fixedBytes(const char* variable, std::size_t size) {
  Bytes bytes = parseHex(environment(variable)).value_or(Bytes{});
  if (bytes.size() != size) bytes.assign(size, 0);
  return bytes;
}

std::unique_ptr<Reader> makeReader(const std::string& device) {
  if (device == "terminal") return makeTerminalReader();
  if (device != "sam") return nullptr;
  return makeSamReader({fixedBytes("MVX2_SIM_SAM_KEY", 16), fixedBytes("MVX2_SIM_SAM_SERIAL", 7)});
}

}  // namespace

Slot::Slot(std::unique_ptr<Reader> reader, const std::string& controlPath)
    : m_reader(std::move(reader)),
      m_socket(controlPath, [this](const std::string& line) { return control(line); }) {}

bool Slot::cardPresent() {
  const std::lock_guard lock(m_mutex);
  return m_reader->cardPresent();
}

Bytes Slot::powerUp() {
  const std::lock_guard lock(m_mutex);
  m_reader->powerOff();
  return m_reader->answerToReset();
}

void Slot::powerOff() {
  const std::lock_guard lock(m_mutex);
  m_reader->powerOff();
}

Exchange Slot::transmit(const Bytes& apdu) {
  Exchange exchange;
  {
    const std::lock_guard lock(m_mutex);
    exchange = m_reader->transmit(apdu);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(exchange.delayMilliseconds));
  return exchange;
}

std::string Slot::control(const std::string& line) {
  const std::lock_guard lock(m_mutex);
  return m_reader->control(line);
}

Slot* findSlot(unsigned long lun) {
  const std::lock_guard lock(slots().mutex);
  const auto found = slots().byLun.find(lun);
  return found == slots().byLun.end() ? nullptr : found->second.get();
}

Slot* openSlot(unsigned long lun, const std::string& deviceName) {
  if (Slot* const slot = findSlot(lun); slot != nullptr) return slot;
  const std::string device = deviceName.substr(deviceName.rfind('/') + 1);
  std::unique_ptr<Reader> reader = makeReader(device);
  if (reader == nullptr) return nullptr;
  const std::string directory = environment("MVX2_SIM_DIR");
  const std::string path = directory.empty() ? "" : directory + "/" + device + ".control";

  const std::lock_guard lock(slots().mutex);
  return (slots().byLun[lun] = std::make_unique<Slot>(std::move(reader), path)).get();
}

}  // namespace mvx2sim
