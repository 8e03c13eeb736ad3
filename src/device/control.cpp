// The terminal itself.
#include "device/exchange.h"

namespace velmorin {

const char* MVX2Interfaces::getVersion_CPtr() {
  static char response[128];
  return text("version", "version : ", response);
}

const char* MVX2Interfaces::getBootVersion_CPtr() {
  static char response[128];
  return text("vboot", "bootversion : ", response);
}

void MVX2Interfaces::beep(unsigned int duration) {
  if (duration == 0)
    send("beep", "beep : ");
  else
    set("beep", duration, "beep : ");
}

void MVX2Interfaces::beep_CPtr(const char* text) {
  std::string notHandedBack;
  const auto exchange = [&](Channel& channel) { return channel.mvx2Transaction(withText("beep", text)); };
  attempt("beep : ", exchange, notHandedBack);
}

void MVX2Interfaces::reboot() { send("reboot", "reboot : "); }

void MVX2Interfaces::quit() { send("q", "quit : "); }

void MVX2Interfaces::online() { send("online", "online : "); }

bool MVX2Interfaces::isBootloader() { return showsPrompt('#', "isBootloader : "); }

bool MVX2Interfaces::isOnline() { return showsPrompt('$', "isOnline : "); }

}  // namespace velmorin
