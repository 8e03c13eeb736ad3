// What is done with the card on the terminal.
#include "device/exchange.h"

namespace velmorin {

int MVX2Interfaces::readCard() { return number<int>("read", "read : ", not_done); }

const char* MVX2Interfaces::readCard_CPtr() {
  static char response[128];
  return text("read", "read : ", response);
}

int MVX2Interfaces::fReadCard() { return number<int>("fread", "fread : ", not_done); }

const char* MVX2Interfaces::fReadCard_CPtr() {
  static char response[128];
  return text("fread", "fread : ", response);
}

int MVX2Interfaces::writeCard() { return number<int>("write", "write : ", not_done); }

const char* MVX2Interfaces::writeCard_CPtr() {
  static char response[128];
  return text("write", "write : ", response);
}

int MVX2Interfaces::persoread() { return number<int>("persoread", "persoread : ", not_done); }

const char* MVX2Interfaces::persoread_CPtr() {
  static char response[128];
  return text("persoread", "persoread : ", response);
}

int MVX2Interfaces::persocreate() { return number<int>("persocreate", "persocreate : ", not_done); }

const char* MVX2Interfaces::persocreate_CPtr() {
  static char response[128];
  return text("persocreate", "persocreate : ", response);
}

bool MVX2Interfaces::getSwitch() { return number<bool>("switch", "switchCard : ", false); }

const char* MVX2Interfaces::getSwitch_CPtr() {
  static char response[128];
  return text("switch", "switchCard : ", response);
}

}  // namespace velmorin
