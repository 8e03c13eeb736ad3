/**
 * @file
 * The device facade: the host application's handle on a card terminal.
 */
#ifndef MVX2_MVX2INTERFACES_H
#define MVX2_MVX2INTERFACES_H

#include <mvx2/export.h>

#include <ostream>

class Channel;

namespace velmorin {

/** How connect() looks for the terminal. With any other value it never connects. */
enum ConnectMode_t : int {
  CONNECT_DEFAULT = -1, /**< the terminal's PC/SC reader */
  CONNECT_USB = 2       /**< the same */
};

/**
 * Drives one card terminal. At most two facades exist, one per slot; getInstance() makes them and
 * releaseInstance() destroys them.
 *
 * **Failures.** An operation that talks to the terminal catches every `std::exception`, writes one line to
 * the log and then does one of two things. With external exceptions off (the default) it calls reconnect(0),
 * which makes one attempt to rebuild the channel for the next call, and returns its neutral value. With
 * external exceptions on it throws a plain `std::exception`, whose text is the standard library's; the reason
 * is in the log alone. An exception that reconnect(0) itself throws reaches the caller.
 *
 * **An exchange that fails on the way does not raise**: it yields an empty reply, which is converted like any
 * other (0 for a number, an empty text for a text).
 *
 * **Threads.** The library takes no lock: one thread at a time per facade, and per text method across
 * facades.
 */
class MVX2_API MVX2Interfaces {
 public:
  MVX2Interfaces(const MVX2Interfaces&) = delete;
  MVX2Interfaces(MVX2Interfaces&&) = delete;
  MVX2Interfaces& operator=(const MVX2Interfaces&) = delete;
  MVX2Interfaces& operator=(MVX2Interfaces&&) = delete;

  /** @name Lifecycle and connection
   * @{ */

  /**
   * The facade of a slot, made on the first call for it.
   *
   * The slot value of that first call also selects the kind of reader that connect() accepts: 0 one without
   * "MVX3" in its name, 1 one with it, -1 either. Later calls do not change it.
   *
   * @param slot 0, 1, or -1, which shares the entry of slot 0
   * @return the facade, owned by the library until releaseInstance(); null for any other slot
   */
  static MVX2Interfaces* getInstance(int slot);

  /** Destroys the facade stored in this facade's slot, which disconnects it; pointers to it end here. */
  void releaseInstance();

  /**
   * Disconnects if need be, then tries to connect until it succeeds or the attempts are used up. Each failed
   * try, the last one included, is followed by one second of sleep.
   *
   * @param attempts how many tries; 1 or less means a single one
   * @param mode     CONNECT_DEFAULT or CONNECT_USB; with another value every try fails without touching PC/SC
   * @return whether the terminal's reader is connected
   * @throws std::exception if the channel that exists cannot be closed and external exceptions are on
   */
  bool connect(int attempts, ConnectMode_t mode);

  /**
   * disconnect() followed by connect() in mode CONNECT_DEFAULT.
   * @return whether the terminal's reader is connected; false at once if disconnecting failed
   */
  bool reconnect(int attempts);

  /** Closes the channel. @return 1 when there was none, else 0 */
  int disconnect();

  /**
   * Whether a channel exists. Every command asks this first.
   * @return 1 or 0
   * @throws MVX2Exception "null Pointer" if there is no channel and external exceptions are on
   */
  int channelIsReady();

  /**
   * Probes the channel with an empty command. A reader that does not answer still counts as connected, since
   * a failed text exchange raises nothing.
   *
   * @return false without a channel, and after a failure, which also closes the channel
   */
  bool isConnected();
  /** @} */

  /** @name Names and versions
   * @{ */

  /**
   * The channel's name.
   * @return NUL-terminated: "No connected" without a channel, an empty text with one; valid until
   * disconnect()
   */
  const char* pipeName();

  /** The same as pipeName(). */
  const char* productID();

  /** The library's version banner, NUL-terminated; the text is rebuilt by each call. */
  const char* dllVersion();
  /** @} */

  /** @name Error policy and log
   * @{ */

  /** Switches external exceptions on or off; they are off at first. */
  void enableExternalException(bool enable);

  /** Whether external exceptions are on. */
  bool externalExceptionIsEnable();

  /** Accepted and ignored: no file is made. @return 0 */
  int openLogStream(const char* path);

  /** Accepted and ignored. @return 0 */
  int closeLogStream();
  /** @} */

 private:
  explicit MVX2Interfaces(int readerSelect);
  ~MVX2Interfaces();

  bool tryToConnect();
  void dropChannel() noexcept;

  static MVX2Interfaces* m_instance[2];

  Channel* m_channel = nullptr;  // owned; null when not connected
  ConnectMode_t m_mode = CONNECT_DEFAULT;
  bool m_externalException = false;
  int m_readerSelect;
  std::ostream m_log;
};

}  // namespace velmorin

#endif
