// The terminal itself.
#include "device/exchange.h"

namespace velmorin {

const char* MVX2Interfaces::getVersion_CPtr() {
  static std::string response(128, '\0');
  return text("version", "version : ", response);
}

const char* MVX2Interfaces::getBootVersion_CPtr() {
  static std::string response(128, '\0');
  return text("vboot", "bootversion : ", response);
}

void MVX2Interfaces::beep(unsigned int duration) {
  attempt("beep : ", [&](Channel& channel) {
    if (duration == 0)
      channel.mvx2Transaction("beep");
    else
      channel.mvx2Transaction("beep", static_cast<int>(duration));
  });
}

void MVX2Interfaces::beep_CPtr(const char* text) {
  attempt("beep : ", [&](Channel& channel) { channel.mvx2Transaction(withText("beep", text)); });
}

void MVX2Interfaces::reboot() { send("reboot", "reboot : "); }

void MVX2Interfaces::quit() { send("q", "quit : "); }

void MVX2Interfaces::online() { send("online", "online : "); }

bool MVX2Interfaces::isBootloader() { return showsPrompt('#', "isBootloader : "); }

bool MVX2Interfaces::isOnline() { return showsPrompt('$', "isOnline : "); }

}  // namespace velmorin
