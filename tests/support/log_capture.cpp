#include "support/log_capture.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace mvx2test {

LogCapture::LogCapture() : m_path("/tmp/mvx2-log-XXXXXX") {
  const int file = mkstemp(m_path.data());
  if (file < 0) throw std::runtime_error("no temporary file for the log");
  close(file);
  null_stream.close();
  null_stream.open(m_path, std::ios_base::out);
}

LogCapture::~LogCapture() {
  null_stream.close();
  null_stream.open("/dev/null", std::ios_base::out);
  unlink(m_path.c_str());
}

std::string LogCapture::text() const {
  std::ostringstream text;
  text << std::ifstream(m_path).rdbuf();
  return text.str();
}

std::vector<std::string> LogCapture::lines() const {
  std::vector<std::string> lines;
  std::istringstream text(this->text());
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

}  // namespace mvx2test
