// One line and its reply through a local socket of the simulation.
#ifndef MVX2SIM_CONTROL_LINES_H
#define MVX2SIM_CONTROL_LINES_H

#include <functional>
#include <optional>
#include <string>

namespace mvx2sim {

using AnswerLine = std::function<std::string(const std::string&)>;

// A socket that takes lines at this path, closed on exec and never blocking; -1 with errno set when there is
// none.
int openLineSocket(const std::string& path);

// Answers one line, if one waits. A client that connects and stays silent is dropped after a second.
void answerLine(int listener, const AnswerLine& answer);

// Sends a line to a path and returns the reply; nothing, with errno set, when nobody answers there.
std::optional<std::string> askLine(const std::string& path, const std::string& line);

}  // namespace mvx2sim

#endif
