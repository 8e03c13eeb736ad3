// What a card holds in money.
#include "device/exchange.h"

namespace velmorin {

int MVX2Interfaces::getValue() { return number<int>("value", "value : "); }

const char* MVX2Interfaces::getValue_CPtr() {
  static char response[128];
  return text("value", "value : ", response, NotReady::keepsText);
}

int MVX2Interfaces::setValue(int value) { return set("value", value, "value : "); }

const char* MVX2Interfaces::setValue_CPtr(const char* text) {
  static char response[128];
  return setText("value", text, "value : ", response);
}

int MVX2Interfaces::getCredit() { return number<int>("credit", "credit : "); }

const char* MVX2Interfaces::getCredit_CPtr() {
  static char response[128];
  return text("credit", "creditStr : ", response);
}

int MVX2Interfaces::getDebit() { return number<int>("debit", "debit : "); }

const char* MVX2Interfaces::getDebit_CPtr() {
  static char response[128];
  return text("debit", "debitStr : ", response);
}

int MVX2Interfaces::getMaxVal() { return number<int>("maxval", "maxVal : "); }

const char* MVX2Interfaces::getMaxVal_CPtr() {
  static char response[128];
  return text("maxval", "maxVal : ", response);
}

int MVX2Interfaces::setMaxVal(unsigned int maxVal) { return set("maxval", maxVal, "maxVal : "); }

const char* MVX2Interfaces::setMaxVal_CPtr(const char* text) {
  static char response[128];
  return setText("maxval", text, "maxVal : ", response);
}

bool MVX2Interfaces::getAddVal() { return number<bool>("addval", "addVal : ", false); }

const char* MVX2Interfaces::getAddVal_CPtr() {
  static char response[128];
  return text("addval", "addVal : ", response);
}

int MVX2Interfaces::setAddVal(bool addVal) { return set("addval", addVal, "addVal : "); }

const char* MVX2Interfaces::setAddVal_CPtr(const char* text) {
  static char response[128];
  return setText("addval", text, "addVal : ", response);
}

}  // namespace velmorin
