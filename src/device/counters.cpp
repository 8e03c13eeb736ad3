// What terminal and card count.
#include "device/exchange.h"

namespace velmorin {

int MVX2Interfaces::getWrerrs() { return number<int>("wrerrs", "wrerrs : "); }

const char* MVX2Interfaces::getWrerrs_CPtr() {
  static char response[128];
  return text("wrerrs", "wrerrsStr : ", response);
}

int MVX2Interfaces::getTrs() { return number<int>("trs", "trs : "); }

const char* MVX2Interfaces::getTrs_CPtr() {
  static char response[128];
  return text("trs", "trsStr : ", response);
}

unsigned short MVX2Interfaces::getCCredit() { return number<unsigned short>("ccredit", "cCredit : "); }

const char* MVX2Interfaces::getCCredit_CPtr() {
  static char response[128];
  return text("ccredit", "cCredit : ", response);
}

unsigned short MVX2Interfaces::getCDebit() { return number<unsigned short>("cdebit", "cDebit : "); }

const char* MVX2Interfaces::getCDebit_CPtr() {
  static char response[128];
  return text("cdebit", "cDebit : ", response);
}

int MVX2Interfaces::getCTrs() { return number<int>("ctrs", "cTrs : "); }

const char* MVX2Interfaces::getCTrs_CPtr() {
  static char response[128];
  return text("ctrs", "cTrs : ", response);
}

int MVX2Interfaces::getLastMVX2() { return number<int>("lastmvx2", "lastMVX2 : "); }

const char* MVX2Interfaces::getLastMVX2_CPtr() {
  static char response[128];
  return text("lastmvx2", "lastMVX2 : ", response);
}

}  // namespace velmorin
