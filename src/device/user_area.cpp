// The user area and the sectors.
#include "device/exchange.h"
#include "diag/digits.h"

namespace velmorin {

unsigned char MVX2Interfaces::getUOffset() { return number<unsigned char>("uoffset", "uOffset : "); }

const char* MVX2Interfaces::getUOffset_CPtr() {
  static char response[128];
  return text("uoffset", "uOffset : ", response, NotReady::keepsText);
}

int MVX2Interfaces::setUOffset(unsigned char uOffset) { return set("uoffset", uOffset, "uOffset : "); }

const char* MVX2Interfaces::setUOffset_CPtr(const char* text) {
  static char response[128];
  return setText("uoffset", text, "uOffset : ", response);
}

unsigned char MVX2Interfaces::getUSector() { return number<unsigned char>("usector", "uSector : "); }

const char* MVX2Interfaces::getUSector_CPtr() {
  static char response[128];
  return text("usector", "uSector : ", response);
}

int MVX2Interfaces::setUSector(unsigned char uSector) { return set("usector", uSector, "uSector : "); }

const char* MVX2Interfaces::setUSector_CPtr(const char* text) {
  static char response[128];
  return setText("usector", text, "uSector : ", response);
}

unsigned short MVX2Interfaces::getUOption() { return hexadecimal<unsigned short>("uoption", "uOption : "); }

const char* MVX2Interfaces::getUOption_CPtr() {
  static char response[128];
  return text("uoption", "uOption : ", response);
}

int MVX2Interfaces::setUOption(unsigned short uOption) { return set("uoption", uOption, "uOption : "); }

const char* MVX2Interfaces::setUOption_CPtr(const char* text) {
  static char response[128];
  return setText("uoption", text, "uOption : ", response);
}

unsigned short MVX2Interfaces::getUFlagId() { return hexadecimal<unsigned short>("uflagid", "uFlagId : "); }

const char* MVX2Interfaces::getUFlagId_CPtr() {
  static char response[128];
  return text("uflagid", "uFlagId : ", response);
}

int MVX2Interfaces::setUFlagId(unsigned short uFlagId) { return set("uflagid", uFlagId, "uFlagId : "); }

const char* MVX2Interfaces::setUFlagId_CPtr(const char* text) {
  static char response[128];
  return setText("uflagid", text, "uFlagId : ", response);
}

unsigned short MVX2Interfaces::getSectors() { return hexadecimal<unsigned short>("sectors", "sectors : "); }

const char* MVX2Interfaces::getSectors_CPtr() {
  static char response[128];
  return text("sectors", "sectors : ", response);
}

int MVX2Interfaces::setSectors1(unsigned short sectors) {
  const auto exchange = [&](Channel& channel) {
    return channel.mvx2Transaction("sectors 0x" + mvx2::hexadecimalDigits(sectors) + '\r');
  };
  return static_cast<int>(decimalReply("sectors : ", exchange, not_done));
}

int MVX2Interfaces::setSectors2(unsigned char /*first*/, unsigned char second) {
  return set("sectors", second, "sectors : ");
}

const char* MVX2Interfaces::setSectors_CPtr(const char* text) {
  static char response[128];
  return setText("sectors", text, "sectors : ", response);
}

}  // namespace velmorin
