// Points and modes.
#include "device/exchange.h"

namespace velmorin {

unsigned char MVX2Interfaces::getPts() { return number<unsigned char>("pts", "pts : "); }

const char* MVX2Interfaces::getPts_CPtr() {
  static char response[128];
  return text("pts", "pts : ", response);
}

int MVX2Interfaces::setPts(unsigned char pts) { return set("pts", pts, "pts : "); }

const char* MVX2Interfaces::setPts_CPtr(const char* text) {
  static char response[128];
  return setText("pts", text, "pts : ", response);
}

unsigned char MVX2Interfaces::getPtsI() { return number<unsigned char>("ptsi", "ptsI : "); }

const char* MVX2Interfaces::getPtsI_CPtr() {
  static char response[128];
  return text("ptsi", "ptsI : ", response);
}

int MVX2Interfaces::setPtsI(unsigned char ptsI) { return set("ptsi", ptsI, "ptsI : "); }

const char* MVX2Interfaces::setPtsI_CPtr(const char* text) {
  static char response[128];
  return setText("ptsi", text, "ptsI : ", response);
}

unsigned char MVX2Interfaces::getMode() { return number<unsigned char>("mode", "mode : "); }

const char* MVX2Interfaces::getMode_CPtr() {
  static char response[128];
  return text("mode", "mode : ", response);
}

int MVX2Interfaces::setMode(unsigned char mode) { return set("mode", mode, "mode : "); }

const char* MVX2Interfaces::setMode_CPtr(const char* text) {
  static char response[128];
  return setText("mode", text, "mode : ", response);
}

// Both label their lines as the count of transactions does.
unsigned char MVX2Interfaces::getPMode() { return number<unsigned char>("pmode", "cTrs : "); }

const char* MVX2Interfaces::getPMode_CPtr() {
  static char response[128];
  return text("pmode", "cTrs : ", response);
}

unsigned char MVX2Interfaces::getFreq() { return hexadecimal<unsigned char>("freq", "freq : "); }

const char* MVX2Interfaces::getFreq_CPtr() {
  static char response[128];
  return text("freq", "freq : ", response);
}

int MVX2Interfaces::setFreq(int freq) { return set("freq", freq, "freq : "); }

const char* MVX2Interfaces::setFreq_CPtr(const char* text) {
  static char response[128];
  return setText("freq", text, "freq : ", response);
}

}  // namespace velmorin
