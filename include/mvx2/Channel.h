/**
 * @file
 * The abstract transport below the facades, with the text format of the terminal's command protocol.
 */
#ifndef MVX2_CHANNEL_H
#define MVX2_CHANNEL_H

#include <mvx2/export.h>

#include <string>

/**
 * A transport. It owns the text format: how a command line is terminated and how the useful text is cut out
 * of a raw reply. A derived class supplies the raw exchange.
 *
 * The virtual functions are declared in the order of their slots, which is part of the binary interface.
 */
class MVX2_API Channel {
 public:
  Channel();
  Channel(const Channel&) = delete;
  Channel(Channel&&) = delete;
  Channel& operator=(const Channel&) = delete;
  Channel& operator=(Channel&&) = delete;

  /**
   * The request as it goes on the wire: the command, with one carriage return appended unless it already
   * holds one at any position. No line feed is ever added.
   */
  virtual std::string formatMessage(const std::string& command);

  /**
   * Cuts the answer out of a raw reply: skips the echoed command line, stops before the first of the prompt
   * characters '#', '>' and '$', removes every carriage return and the last line feed.
   *
   * The byte at index 0 is never taken for the end of the echo.
   *
   * @param data   the raw reply, `length` bytes, NULs allowed; may be null when length is 0
   * @param length its length in bytes
   * @return the answer, inner line feeds kept; empty when the reply holds none
   */
  virtual std::string formatResponse(const unsigned char* data, unsigned int length);

  virtual ~Channel();

  /** Sends the request bytes as they are and returns the raw reply bytes. */
  virtual std::string mvx2NoFormattedTransaction(const std::string& request) = 0;

  /**
   * Sends a buffer as it is and returns the raw reply bytes.
   * @param data   the bytes to send; may be null when length is 0
   * @param length how many there are
   */
  virtual std::string mvx2APDUTransaction(const char* data, int length) = 0;

  /**
   * One framed exchange: formatMessage(), mvx2NoFormattedTransaction(), formatResponse(). No retry, no check
   * of the reply; whatever the derived channel throws passes through.
   */
  std::string mvx2Transaction(const std::string& command);

  /** The same with one argument: the command, a blank, the argument in decimal and a carriage return. */
  std::string mvx2Transaction(const std::string& command, int argument);

  /** The channel's name, NUL-terminated, valid as long as the channel; empty unless a derived class set one.
   */
  const char* name() const noexcept;

 protected:
  std::string m_name; /**< what name() returns */
};

#endif
