#include <mvx2/SAMInterfaces.h>

#include <mvx2/SAMChannel.h>

#include "diag/clock.h"
#include "diag/text_buffer.h"

#include <unistd.h>

#include <exception>
#include <iostream>
#include <string>
#include <utility>

namespace {

// Writes the line of an error. The log may be what failed: then the line is lost.
void report(std::ostream& log, const char* label, const std::exception& error) noexcept {
  try {
    log << label << error.what() << std::endl;
  } catch (...) {
    return;
  }
}

}  // namespace

SAMInterfaces* SAMInterfaces::m_instance = nullptr;

SAMInterfaces* SAMInterfaces::getInstance() {
  if (m_instance == nullptr) m_instance = new SAMInterfaces;
  return m_instance;
}

void SAMInterfaces::releaseInstance() {
  delete m_instance;
  m_instance = nullptr;
}

SAMInterfaces::SAMInterfaces() : m_log(&std::cout) {}

SAMInterfaces::~SAMInterfaces() {
  delete m_channel;
  closeLogStream();
}

int SAMInterfaces::SAM_connect(int attempts) {
  if (m_channel != nullptr) SAM_disconnect();
  int result = 0;
  // No attempt ends the loop, a successful one neither: each makes a new connection, and the last one stays.
  for (int left = attempts;; --left) {
    attemptToConnect(result);
    sleep(1);
    if (left <= 1) return result;
  }
}

void SAMInterfaces::attemptToConnect(int& result) {
  try {
    dropChannel();
    m_channel = new SAMChannel;
    const long status = m_channel->connect();
    result = status == 0 ? 1 : 0;
    *m_log << "SAM connexion at " << mvx2::now() << " (status = " << result << ")(error = " << std::hex
           << status << ")" << std::endl;
  } catch (const std::exception& e) {
    dropChannel();
    report(*m_log, "SAM: ", e);
  }
}

void SAMInterfaces::dropChannel() noexcept { delete std::exchange(m_channel, nullptr); }

int SAMInterfaces::SAM_disconnect() {
  if (m_channel == nullptr) return 1;
  dropChannel();
  try {
    *m_log << "SAM disconnexion at " << mvx2::now() << std::endl;
  } catch (const std::exception& e) {
    report(*m_log, "disconnect : ", e);
    if (m_externalException) throw std::exception();
  }
  return 0;
}

bool SAMInterfaces::SAM_isConnected() { return m_channel != nullptr && m_channel->isConnected(); }

bool SAMInterfaces::channelIsReady() { return m_channel != nullptr; }

int SAMInterfaces::findSAMConnection() {
  if (m_channel == nullptr) m_channel = new SAMChannel;
  return 0;
}

bool SAMInterfaces::SAM_getVersion(char* serial) {
  long notHandedBack = 0;
  return m_channel != nullptr && m_channel->getVersion(serial, notHandedBack, 7);
}

bool SAMInterfaces::SAM_unlock(unsigned char* key, unsigned long keyLength) {
  long notHandedBack = 0;
  if (m_channel == nullptr || !m_channel->unlock(key, notHandedBack, keyLength)) return false;
  m_unlocked = 1;
  return true;
}

const char* SAMInterfaces::dllVersion() {
  static char version[128];
  return mvx2::assign(version, "VELMORIN SAM DLL\tV4.0.1.1\tJul  2 2015");
}

bool SAMInterfaces::externalExceptionIsEnable() { return m_externalException; }

void SAMInterfaces::enableExternalException(bool enable) { m_externalException = enable; }

int SAMInterfaces::openLogStream(const char* /*path*/) { return 0; }

int SAMInterfaces::closeLogStream() { return 0; }
