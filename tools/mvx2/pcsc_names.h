// What the codes of PC/SC, of cards and of the SAM's unlock mean, and what usually helps.
#ifndef MVX2TOOL_PCSC_NAMES_H
#define MVX2TOOL_PCSC_NAMES_H

#include <cstdint>
#include <optional>
#include <string>

namespace mvx2tool {

struct Explanation {
  std::string kind;  // "PC/SC status", "status word" or "unlock status"
  std::string code;
  std::string name;
  std::string meaning;
  std::string remedy;
};

// The name of a PC/SC status, or "unknown status".
const char* statusName(std::uint32_t status);
const char* statusRemedy(std::uint32_t status);

Explanation explainStatus(std::uint32_t status);
// SW1 SW2 as one number (ISO/IEC 7816-4).
Explanation explainStatusWord(unsigned statusWord);
// A status of SAMChannel::unlock() that is none of PC/SC.
Explanation explainUnlock(long status);

// A code as a user writes it: 0x8010001D, SCARD_E_NO_SERVICE, 6982, "69 82", -2. Nothing for anything else.
std::optional<Explanation> explainText(const std::string& code);

}  // namespace mvx2tool

#endif
