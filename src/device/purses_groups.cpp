// Purses and groups.
#include "device/exchange.h"

namespace velmorin {

int MVX2Interfaces::getPurse() { return number<int>("purse", "purse : "); }

const char* MVX2Interfaces::getPurse_CPtr() {
  static char response[128];
  return text("purse", "purse : ", response);
}

int MVX2Interfaces::setPurse(unsigned int purse) { return set("purse", purse, "purse : "); }

const char* MVX2Interfaces::setPurse_CPtr(const char* text) {
  static char response[128];
  return setText("purse", text, "purse : ", response);
}

int MVX2Interfaces::chPurse(unsigned int purse) { return set("chpurse", purse, "chpurse : "); }

const char* MVX2Interfaces::chPurse_CPtr(const char* text) {
  static char response[128];
  return setText("chpurse", text, "chpurse : ", response);
}

int MVX2Interfaces::delPurse(unsigned int purse) { return set("delpurse", purse, "delpurse : "); }

const char* MVX2Interfaces::delPurse_CPtr(const char* text) {
  static char response[128];
  return setText("delpurse", text, "delpurse : ", response);
}

unsigned int* MVX2Interfaces::getListPurses() {
  static unsigned int response[10];
  return list("listpurses", "listpurses : ", response);
}

const char* MVX2Interfaces::getListPurses_CPtr() {
  static char response[128];
  return text("listpurses", "listpurses : ", response);
}

int MVX2Interfaces::addGrp() { return number<int>("addgrp", "addgrp : ", not_done); }

const char* MVX2Interfaces::addGrp_CPtr() {
  static char response[128];
  return text("addgrp", "addgrp : ", response);
}

int MVX2Interfaces::delGrp(unsigned int group) { return set("delgrp", group, "delgrp : "); }

const char* MVX2Interfaces::delGrp_CPtr(const char* text) {
  static char response[128];
  return setText("delgrp", text, "delgrp : ", response);
}

// The label is that of the purses.
unsigned int* MVX2Interfaces::getListGrp() {
  static unsigned int response[10];
  return list("listgrp", "listpurses : ", response);
}

const char* MVX2Interfaces::getListGrp_CPtr() {
  static char response[128];
  return text("listgrp", "listgrp : ", response);
}

}  // namespace velmorin
