// Texts that must not be left behind: keys.
#ifndef MVX2TOOL_SECRETS_H
#define MVX2TOOL_SECRETS_H

#include <cstddef>
#include <string>

namespace mvx2tool {

// Overwrites the text, its spare room included, and empties it.
void wipe(std::string& text);

// A text that is overwritten when it goes.
class Secret {
 public:
  Secret() = default;
  // Takes the text over and leaves nothing in the argument.
  explicit Secret(std::string text) : m_text(text) { wipe(text); }
  Secret(const Secret& other) = default;
  Secret(Secret&& other) noexcept;
  Secret& operator=(const Secret&) = delete;
  Secret& operator=(Secret&&) = delete;
  ~Secret() { wipe(m_text); }

  const std::string& text() const { return m_text; }
  // As many asterisks as the text has characters.
  std::string masked() const {
    std::string mask(m_text.size(), '*');
    return mask;
  }

 private:
  std::string m_text;
};

// Reads a key from a file, or from standard input when the name is "-": one line of printable characters,
// blanks around it left out.
Secret readSecret(const std::string& file);

}  // namespace mvx2tool

#endif
