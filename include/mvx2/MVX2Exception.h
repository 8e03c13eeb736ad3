/**
 * @file
 * The one exception type that the library itself raises.
 */
#ifndef MVX2_MVX2EXCEPTION_H
#define MVX2_MVX2EXCEPTION_H

#include <mvx2/export.h>

#include <exception>
#include <string>

/**
 * Says what failed, with which code, and where.
 *
 * The channels raise it for PC/SC failures and malformed replies. The facades never let it out: they log its
 * text and then hand a neutral value or a plain `std::exception` to their caller.
 */
class MVX2_API MVX2Exception : public std::exception {
 public:
  /**
   * Formats the text once, as `message (0xcode) [function:file:line]`, for example
   * "SCardEstablishContext (0x8010001d) [USBChannel:USBChannel:26]".
   *
   * A null message, function or file ends the text at the place where it would stand, as inserting a null
   * character pointer into an output stream does.
   *
   * @param message  what failed, often the name of a PC/SC call; NUL-terminated, copied
   * @param code     the status that came with it; its low 32 bits are printed, in lower-case hexadecimal
   *                 without leading zeros
   * @param function the operation that raised it; NUL-terminated, copied
   * @param file     the source file without directory; NUL-terminated, copied
   * @param line     the line, printed in decimal
   */
  MVX2Exception(const char* message, long code, const char* function, const char* file, int line);

  MVX2Exception(const MVX2Exception&) = default;            /**< Copies the text. */
  MVX2Exception(MVX2Exception&&) = default;                 /**< Takes the text over. */
  MVX2Exception& operator=(const MVX2Exception&) = default; /**< Copies the text. */
  MVX2Exception& operator=(MVX2Exception&&) = default;      /**< Takes the text over. */
  ~MVX2Exception() override;

  /** The formatted text, NUL-terminated, owned by this object and valid as long as it. Never fails. */
  const char* what() const noexcept override;

 private:
  std::string m_text;
};

#endif
