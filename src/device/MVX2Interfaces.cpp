#include <mvx2/MVX2Interfaces.h>

#include <mvx2/Channel.h>
#include <mvx2/MVX2Exception.h>
#include <mvx2/NullStream.h>
#include <mvx2/USBChannel.h>

#include "diag/clock.h"
#include "diag/text_buffer.h"

#include <unistd.h>

#include <exception>
#include <string>

namespace velmorin {
namespace {

// The entry of the instance array that a slot value stands for, or -1.
int entryOf(int slot) {
  if (slot == -1) return 0;
  return slot == 0 || slot == 1 ? slot : -1;
}

}  // namespace

MVX2Interfaces* MVX2Interfaces::m_instance[2] = {nullptr, nullptr};

MVX2Interfaces* MVX2Interfaces::getInstance(int slot) {
  const int entry = entryOf(slot);
  if (entry < 0) return nullptr;
  MVX2Interfaces*& instance = m_instance[entry];
  // The raw slot value goes in: -1 stays -1 and accepts either kind of reader.
  if (instance == nullptr) instance = new MVX2Interfaces(slot);
  return instance;
}

void MVX2Interfaces::releaseInstance() {
  const int entry = entryOf(m_readerSelect);
  if (entry < 0) return;
  MVX2Interfaces*& instance = m_instance[entry];
  delete instance;
  instance = nullptr;
}

MVX2Interfaces::MVX2Interfaces(int readerSelect) : m_readerSelect(readerSelect), m_log(&null_stream) {}

MVX2Interfaces::~MVX2Interfaces() {
  delete m_channel;
  closeLogStream();
}

bool MVX2Interfaces::connect(int attempts, ConnectMode_t mode) {
  if (m_channel != nullptr) disconnect();
  m_mode = mode;
  for (int left = attempts;; --left) {
    if (tryToConnect()) return true;
    sleep(1);
    if (left <= 1) return false;
  }
}

bool MVX2Interfaces::tryToConnect() {
  if (m_mode != CONNECT_DEFAULT && m_mode != CONNECT_USB) return false;
  try {
    m_channel = new USBChannel(m_readerSelect);
    m_channel->mvx2Transaction("");
    m_log << "USB connexion at " << mvx2::now() << std::endl;
    return true;
  } catch (const std::exception& e) {
    dropChannel();
    m_log << "USB: " << e.what() << std::endl;
    return false;
  }
}

void MVX2Interfaces::dropChannel() noexcept {
  delete m_channel;
  m_channel = nullptr;
}

bool MVX2Interfaces::reconnect(int attempts) {
  try {
    disconnect();
  } catch (const std::exception&) {
    return false;
  }
  return connect(attempts, CONNECT_DEFAULT);
}

int MVX2Interfaces::disconnect() {
  if (m_channel == nullptr) return 1;
  dropChannel();
  try {
    m_log << "MVX2Interfaces disconnexion at " << mvx2::now() << std::endl;
  } catch (const std::exception& e) {
    m_log << "disconnect : " << e.what() << std::endl;
    if (m_externalException) throw std::exception();
  }
  return 0;
}

int MVX2Interfaces::channelIsReady() {
  if (m_channel != nullptr) return 1;
  if (m_externalException) throw MVX2Exception("null Pointer", 0, "channelIsReady", "MVX2Interfaces", 118);
  return 0;
}

bool MVX2Interfaces::isConnected() {
  try {
    if (channelIsReady() == 0) return false;
    m_channel->mvx2Transaction("");
    return true;
  } catch (const std::exception& e) {
    // The label is that of isBootloader(): both probe the terminal.
    m_log << "isBootloader : " << e.what() << std::endl;
    if (m_externalException) throw std::exception();
  }
  disconnect();
  return false;
}

const char* MVX2Interfaces::pipeName() { return m_channel == nullptr ? "No connected" : m_channel->name(); }

const char* MVX2Interfaces::productID() { return pipeName(); }

const char* MVX2Interfaces::dllVersion() {
  static char version[128];
  return mvx2::assign(version, "VELMORIN MVXx DLL\tV4.0.1.1\tJul  2 2015");
}

void MVX2Interfaces::enableExternalException(bool enable) { m_externalException = enable; }

bool MVX2Interfaces::externalExceptionIsEnable() { return m_externalException; }

int MVX2Interfaces::openLogStream(const char* /*path*/) { return 0; }

int MVX2Interfaces::closeLogStream() { return 0; }

}  // namespace velmorin
