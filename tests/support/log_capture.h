// Reads what the device facades log, by opening their common buffer on a file for a while.
#ifndef MVX2_TESTS_LOG_CAPTURE_H
#define MVX2_TESTS_LOG_CAPTURE_H

#include <mvx2/NullStream.h>

#include <string>
#include <vector>

namespace mvx2test {

class LogCapture {
 public:
  LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture(LogCapture&&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  LogCapture& operator=(LogCapture&&) = delete;
  ~LogCapture();

  // All that was logged since construction.
  std::string text() const;
  // The same by line, line feeds removed.
  std::vector<std::string> lines() const;

 private:
  std::string m_path;
};

}  // namespace mvx2test

#endif
