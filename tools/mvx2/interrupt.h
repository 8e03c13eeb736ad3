// SIGINT and SIGTERM.
#ifndef MVX2TOOL_INTERRUPT_H
#define MVX2TOOL_INTERRUPT_H

#include <chrono>

namespace mvx2tool::interrupt {

// From now on either signal ends the program at once with Exit::interrupted.
void exitAtOnce();

// From now on the first signal is only noted, for a command that has something to finish; a second one, which
// comes when an exchange hangs, ends the program at once.
void note();

bool requested();

// Waits so long, or until a signal is noted. Whether one was.
bool wait(std::chrono::milliseconds time);

}  // namespace mvx2tool::interrupt

#endif
