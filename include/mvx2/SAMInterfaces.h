/**
 * @file
 * The SAM facade: the host application's handle on the secure access module.
 */
#ifndef MVX2_SAMINTERFACES_H
#define MVX2_SAMINTERFACES_H

#include <mvx2/export.h>

#include <iosfwd>

class SAMChannel;

/**
 * Connects and unlocks the secure access module. One facade exists per process; it owns at most one
 * SAMChannel. The card and key commands are not reachable through it.
 *
 * **Failures** are a false or 0 result. The details show in the line that SAM_connect() writes. Only
 * SAM_disconnect() throws, and only with external exceptions on, apart from `std::bad_alloc`.
 *
 * **Log.** Connection events go to the process's standard output, which SAM_connect() leaves in hexadecimal
 * mode.
 *
 * **Threads.** The library takes no lock: one thread at a time.
 */
class MVX2_API SAMInterfaces {
 public:
  SAMInterfaces(const SAMInterfaces&) = delete;
  SAMInterfaces(SAMInterfaces&&) = delete;
  SAMInterfaces& operator=(const SAMInterfaces&) = delete;
  SAMInterfaces& operator=(SAMInterfaces&&) = delete;

  /** The facade, made on the first call; owned by the library until releaseInstance(). */
  static SAMInterfaces* getInstance();

  /** Destroys the facade if there is one, which disconnects it; pointers to it end here. */
  static void releaseInstance();

  /** @name Connection
   * @{ */

  /**
   * Disconnects if need be, then connects **as often as asked, whether or not an attempt succeeds**, with a
   * new channel each time; the last one is kept. Each attempt is followed by one second of sleep.
   *
   * Each attempt writes "SAM connexion at " with the local time, a line feed, and " (status = 1)(error = 0)"
   * with its result and PC/SC status, the latter in hexadecimal; or, after an exception, which leaves no
   * channel, "SAM: " with its text.
   *
   * @param attempts how many; 1 or less means a single one
   * @return 1 if the last attempt that was not ended by an exception got the PC/SC status 0, else 0. It is
   * also 1 when no reader qualified: ask SAM_isConnected()
   * @throws std::exception as SAM_disconnect() does
   */
  int SAM_connect(int attempts);

  /**
   * Closes the channel and writes "SAM disconnexion at " with the local time and an empty line.
   *
   * @return 1 when there was none, else 0
   * @throws std::exception (exactly that type) if writing the line raises one and external exceptions are on;
   *         the channel is closed all the same
   */
  int SAM_disconnect();

  /** Whether a channel exists and is connected to a reader. */
  bool SAM_isConnected();

  /** Whether a channel exists, connected or not. */
  bool channelIsReady();

  /** Makes an unconnected channel if there is none. @return 0 */
  int findSAMConnection();
  /** @} */

  /** @name The module
   * @{ */

  /**
   * Reads the module's serial number and checks its version record, see SAMChannel::getVersion().
   *
   * @param serial receives 7 bytes; not NUL-terminated
   * @return false without a channel and after any failure
   */
  bool SAM_getVersion(char* serial);

  /**
   * Unlocks the module, see SAMChannel::unlock().
   *
   * @param key       16 bytes: the unlock key; used and not kept
   * @param keyLength not used
   * @return false without a channel and after any failure
   */
  bool SAM_unlock(unsigned char* key, unsigned long keyLength);
  /** @} */

  /** @name Version, error policy and log
   * @{ */

  /** The library's version banner, NUL-terminated; the text is rebuilt by each call. */
  const char* dllVersion();

  /** Whether external exceptions are on. */
  bool externalExceptionIsEnable();

  /** Switches external exceptions on or off; they are off at first. */
  void enableExternalException(bool enable);

  /** Accepted and ignored: the log always goes to standard output. @return 0 */
  int openLogStream(const char* path);

  /** Accepted and ignored. @return 0 */
  int closeLogStream();
  /** @} */

 private:
  SAMInterfaces();
  ~SAMInterfaces();

  void attemptToConnect(int& result);
  void dropChannel() noexcept;

  static SAMInterfaces* m_instance;

  SAMChannel* m_channel = nullptr;  // owned; null when there is none
  bool m_externalException = false;
  std::ostream* m_log;  // standard output; not owned
  int m_unlocked = 0;   // 1 once SAM_unlock() has succeeded; never cleared
};

#endif
