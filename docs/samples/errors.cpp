// What a host application sees of failures, with external exceptions off and on, and where the reasons go.
#include <mvx2/MVX2Interfaces.h>
#include <mvx2/NullStream.h>

#include <exception>
#include <iostream>

namespace {

void show(const char* when, velmorin::MVX2Interfaces& terminal) {
  try {
    const int credit = terminal.getCredit();
    const char* const text = terminal.getCredit_CPtr();
    std::cout << when << credit << ", \"" << text << "\"\n";
  } catch (const std::exception& e) {
    std::cout << when << e.what() << '\n';
  }
}

}  // namespace

int main() {
  // The log is discarded unless a program gives it a file of its own, before it uses a facade.
  null_stream.close();
  null_stream.open("terminal.log", std::ios::out);

  velmorin::MVX2Interfaces* const terminal = velmorin::MVX2Interfaces::getInstance(-1);
  show("no channel:      ", *terminal);
  terminal->enableExternalException(true);
  show("with exceptions: ", *terminal);
  terminal->enableExternalException(false);

  if (!terminal->connect(1, velmorin::CONNECT_DEFAULT)) {
    std::cout << "no terminal\n";
    return 1;
  }
  show("failed exchange: ", *terminal);
  // A failed exchange leaves the reader locked for other programs: reconnect() lets it go.
  terminal->reconnect(1);
  show("reconnected:     ", *terminal);
  terminal->releaseInstance();
}
