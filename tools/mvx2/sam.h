// The SAM, as the library finds it.
#ifndef MVX2TOOL_SAM_H
#define MVX2TOOL_SAM_H

#include "tool.h"

#include <mvx2/SAMChannel.h>

#include <optional>
#include <string>

namespace mvx2tool {

class Sam {
 public:
  // Connects in up to so many attempts. Fails with Exit::noReader or Exit::noAnswer.
  explicit Sam(const Tool& tool);

  const std::string& reader() const { return m_reader; }
  // 14 hexadecimal digits; fails with Exit::noAnswer, or Exit::refused if its version record is unknown.
  std::string serial();
  void unlock(const std::string& key);

 private:
  [[noreturn]] void fail(const std::string& operation, long status) const;

  SAMChannel m_channel;
  std::string m_reader;
};

}  // namespace mvx2tool

#endif
