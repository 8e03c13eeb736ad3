#include "channel/readers.h"

#include <cctype>
#include <cstring>
#include <string>

namespace mvx2 {

std::vector<const char*> readerNames(const char* multiString) {
  std::vector<const char*> names;
  for (const char* name = multiString; *name != '\0'; name += std::strlen(name) + 1) names.push_back(name);
  return names;
}

bool isTerminalReader(const char* name, int readerSelect) {
  std::string upper(name);
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  const auto holds = [&upper](const char* word) { return upper.find(word) != std::string::npos; };

  if (!holds("KRV") && !holds("VELMORIN")) return false;
  switch (readerSelect) {
    case -1:
      return true;
    case 0:
      return !holds("MVX3");
    case 1:
      return holds("MVX3");
    default:
      return false;
  }
}

bool isSamReader(const char* name) {
  const auto holds = [name](const char* word) { return std::strstr(name, word) != nullptr; };
  return holds("ACS") || holds("ACR") || holds("CCID");
}

}  // namespace mvx2
