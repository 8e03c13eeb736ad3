// The keys of cards: texts that pass through unconverted. Without a channel not even a setter shows a stale
// one.
#include "device/exchange.h"

namespace velmorin {

const char* MVX2Interfaces::setFreeKey1_CPtr(const char* key) {
  static char response[128];
  return setText("freekey1", key, "freeKey1 : ", response, NotReady::saysSo);
}

const char* MVX2Interfaces::getFreeKey1_CPtr() {
  static char response[128];
  return text("freekey1", "freeKey1 : ", response);
}

const char* MVX2Interfaces::setFreeKey2_CPtr(const char* key) {
  static char response[128];
  return setText("freekey2", key, "freeKey2 : ", response, NotReady::saysSo);
}

const char* MVX2Interfaces::getFreeKey2_CPtr() {
  static char response[128];
  return text("freekey2", "freeKey2 : ", response);
}

const char* MVX2Interfaces::setMadKey_CPtr(const char* key) {
  static char response[128];
  return setText("madkey", key, "madKey : ", response, NotReady::saysSo);
}

const char* MVX2Interfaces::getMadKey_CPtr() {
  static char response[128];
  return text("madkey", "madKey : ", response);
}

const char* MVX2Interfaces::setUKeyA_CPtr(const char* key) {
  static char response[128];
  return setText("ukeya", key, "uKeyA : ", response, NotReady::saysSo);
}

const char* MVX2Interfaces::getUKeyA_CPtr() {
  static char response[128];
  return text("ukeya", "uKeyA : ", response);
}

}  // namespace velmorin
