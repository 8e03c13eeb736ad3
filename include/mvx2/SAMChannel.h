/**
 * @file
 * The PC/SC transport to the secure access module (SAM), with the module's commands.
 */
#ifndef MVX2_SAMCHANNEL_H
#define MVX2_SAMCHANNEL_H

#include <mvx2/Channel.h>
#include <mvx2/export.h>

#include <winscard.h>

#include <string>

/**
 * Reaches the module in its PC/SC reader and speaks its commands: ISO/IEC 7816-4 short APDUs of class 80.
 *
 * Common to all operations:
 *  - **Arrays** belong to the caller, are never kept, and must not be null unless that is said. Bytes stand
 * in the order in which they travel; byte 0 is the first. A `char` length means 0 to 255 on every platform.
 *  - **Replies** end with the two bytes of the status word: 90 00 is done, 90 AF is done with more to come.
 *  - **Failures** are a false result or a PC/SC status (`SCARD_E_...`, 0 is success). What is given to
 * receive data keeps its content then, unless that is said. Nothing is thrown except `std::bad_alloc` by
 * connect().
 *  - **Order**: connect(), then unlock(), then the card and key commands. The library does not enforce this;
 *    the module refuses what comes too early.
 *  - One object serves one connection and one thread at a time. On an object that was never connected every
 *    operation fails without harm.
 *
 * The virtual functions are declared in the order of their slots, and the data members in the order of their
 * layout; both are part of the binary interface.
 */
class MVX2_API SAMChannel : public Channel {
 public:
  /** Makes a channel without a connection and without any PC/SC call. */
  SAMChannel();

  SAMChannel(const SAMChannel&) = delete;
  SAMChannel(SAMChannel&&) = delete;
  SAMChannel& operator=(const SAMChannel&) = delete;
  SAMChannel& operator=(SAMChannel&&) = delete;

  /** Disconnects, leaving the module powered, and releases the PC/SC context, whatever was acquired. */
  ~SAMChannel() override;

  /** The module has no text protocol: sends nothing. @return an empty text */
  std::string mvx2NoFormattedTransaction(const std::string& request) override;

  /** Sends nothing: APDUs go through APDUTransaction(). @return an empty text */
  std::string mvx2APDUTransaction(const char* data, int length) override;

  /**
   * Exchanges one APDU inside a PC/SC reader transaction of its own. Every command goes through this
   * function, so that a derived class sees, changes or replaces each exchange.
   *
   * Lays out `cla ins p1 p2`, then `Lc data` if there is data, then `le` if it is asked for (the cases 1 to 4
   * of ISO/IEC 7816-4, short form). The reply's status word is not examined.
   *
   * @param data           the command data; may be null when dataLength is 0
   * @param dataLength     how many bytes, at most 63 with Le and 64 without; with more, or with a null `data`
   *                       and a length, SCARD_E_INVALID_PARAMETER is returned before any PC/SC call
   * @param response       receives the reply with its status word: room for 69 bytes is needed. Once the
   *                       command was handed to PC/SC it is written, even if the exchange failed
   * @param responseLength receives the number of bytes written to `response`, at most 69
   * @param p2             parameter byte 2; note that it precedes p1 here
   * @param p1             parameter byte 1
   * @param ins            instruction byte
   * @param le             the Le byte; 0 asks for up to 256 bytes
   * @param sendLe         whether Le is sent
   * @param cla            class byte
   * @return the PC/SC status: 0 when the APDU was exchanged, whatever the module answered. When the reader
   *         transaction cannot be begun nothing is sent and both outputs are left alone
   */
  virtual long APDUTransaction(unsigned char* data, unsigned long dataLength, unsigned char* response,
                               unsigned long& responseLength, unsigned char p2, unsigned char p1,
                               unsigned char ins, unsigned char le, bool sendLe, unsigned char cla);

  /** @name Connection
   * @{ */

  /**
   * Finds the module's reader and connects to it in shared mode, with protocol T=0 or T=1.
   *
   * Readers are looked at from the last listed to the first; the first one met whose name holds "ACS", "ACR"
   * or "CCID" (letter case matters) is taken.
   *
   * Call it once for each object: a second call abandons the first one's context and card connection without
   * releasing them in PC/SC.
   *
   * @return the PC/SC status. It is also 0 when no reader qualified: ask isConnected()
   */
  long connect();

  /**
   * Ends the card connection, leaving the module powered, and then the PC/SC context. isConnected() does not
   * notice, and the destructor makes the same calls again.
   * @return the PC/SC status of the first call that failed; 0 if none did
   */
  long disconnect();

  /** Whether connect() has found and connected a reader. */
  bool isConnected();

  /**
   * Reads the module's serial number and checks its version record: vendor 4, type 1, subtype 1, hardware and
   * software versions with a major number above 2 and a minor number above 1.
   *
   * On a channel that is not connected it calls connect() first and then returns false **when that
   * succeeds**: the next call reads the version.
   *
   * @param out     the array that receives the serial number: 7 bytes, whatever outSize is. Bytes that a
   * short reply did not hold are zero. On a failure after the connection check it is left cleared
   * @param status  receives 0 once the module has answered, -1 if its record does not match; else left alone
   * @param outSize how many bytes of `out` to clear first, 0 to 255
   * @return whether the module answered and its record matches
   */
  bool getVersion(char* out, long& status, char outSize);
  /** @} */

  /** @name Unlock: the mutual authentication of host and module with key entry 1, version 0
   *
   * Status values:
   *
   * | value         | meaning                                                                      |
   * |---------------|------------------------------------------------------------------------------|
   * | 0             | no error so far                                                              |
   * | a PC/SC status| the exchange failed                                                          |
   * | -1            | step 1 or 2: unexpected status word                                          |
   * | -2            | step 1: the reply is not 14 bytes long; step 2: the module's MAC is wrong    |
   * | -3            | step 1 or 2: reply shorter than 3 bytes; step 3: status word other than 90 00|
   * | -5            | step 2: no random numbers from "/dev/urandom"                                |
   *
   * In step 3, a reply shorter than 3 bytes and missing random numbers fail without a value of their own: the
   * status stays 0. A step that succeeds leaves 0, step 1 leaves the status alone.
   *
   * A truncated MAC is the 8 bytes of an AES-CMAC (RFC 4493) at its positions 1, 3, 5, ... 15. The MACs are
   * compared in constant time; schedules, subkeys, the derived key and the secret random numbers are wiped
   * before a function returns.
   * @{ */

  /**
   * Runs the three steps; later ones are not run after a failure. The next call starts at step 1 again.
   *
   * @param key       16 bytes: the unlock key; used and not kept
   * @param status    receives the status of the step that decided; left alone if the channel is not connected
   * @param keyLength not used
   * @return whether the module is unlocked
   */
  bool unlock(unsigned char* key, long& status, unsigned long keyLength);

  /**
   * Step 1: asks for the module's random number.
   * @param rnd2Out receives 12 bytes: Rnd2
   * @param status  see above
   */
  bool unlock_part1(unsigned char* rnd2Out, long& status);

  /**
   * Step 2: proves to the module that the host holds the key, and checks that the module does.
   * @param key      16 bytes: the unlock key
   * @param rnd2     12 bytes: Rnd2 of step 1
   * @param rnd1Out  receives 12 bytes: Rnd1, the host's random number; also if the exchange fails afterwards
   * @param replyOut receives the first 24 bytes of the reply, the module's truncated MAC and its enciphered
   *                 random number RndB, once the status word is right; also if the MAC is wrong. Bytes that a
   *                 short reply did not hold are zero
   * @param status   see above
   */
  bool unlock_part2(unsigned char* key, unsigned char* rnd2, unsigned char* rnd1Out, unsigned char* replyOut,
                    long& status);

  /**
   * Step 3: deciphers RndB with the derived key and sends it back, rotated left by two bytes, behind a second
   * random number of the host (AES-128-CBC, zero IV). The module's proof over that number is not examined:
   * its status word alone decides.
   * @param key        16 bytes: the unlock key
   * @param step2Reply 24 bytes: the reply of step 2
   * @param rnd2       12 bytes: Rnd2; note that it precedes rnd1 here
   * @param rnd1       12 bytes: Rnd1
   * @param status     see above
   */
  bool unlock_part3(unsigned char* key, unsigned char* step2Reply, unsigned char* rnd2, unsigned char* rnd1,
                    long& status);

  /**
   * Derives the key Kxe of step 3: the AES-128 encryption (FIPS 197) under the unlock key of
   * Rnd1[7..11] Rnd2[7..11] (Rnd1[0..4] XOR Rnd2[0..4]) 91.
   * @param key    16 bytes: the unlock key
   * @param rnd1   12 bytes: Rnd1
   * @param rnd2   12 bytes: Rnd2
   * @param kxeOut receives 16 bytes: Kxe, a secret; the caller wipes it
   * @param iv     16 bytes, cleared
   */
  void derivatedSamAESKey(unsigned char* key, unsigned char* rnd1, unsigned char* rnd2, unsigned char* kxeOut,
                          unsigned char* iv);

  /**
   * AES-CMAC (RFC 4493) of exactly 16 bytes.
   * @param message16 16 bytes
   * @param key       16 bytes
   * @param k1        16 bytes, of aes_GenerateSubKey() with the same key
   * @param k2        16 bytes, likewise
   * @param cmacOut   receives 16 bytes: the CMAC
   * @param macOut    receives 8 bytes: the truncated MAC
   */
  void calculateCMAC(unsigned char* message16, unsigned char* key, unsigned char* k1, unsigned char* k2,
                     unsigned char* cmacOut, unsigned char* macOut);
  /** @} */

  /** @name Card and key commands: one APDU each, of class 80 and with P2 00
   *
   * False for a PC/SC error, for a reply of another length or with another status word, and, without an
   * exchange, for more data than an APDU carries.
   * @{ */

  /**
   * First step of a card's authentication against a key in the module (INS 0A, P1 00).
   *
   * @param keyNumber  the key's number in the module
   * @param keyVersion its version
   * @param data       the card's enciphered challenge; may be null when dataLength is 0
   * @param out        receives 32 bytes, the module's answer for the card, if the reply ends 90 AF or 90 00.
   *                   With any other second status byte it is left alone, and the result is true all the same
   * @param dataLength 0 to 61 bytes
   * @return whether the reply has 34 bytes with 90 at index 32
   */
  bool authenticatePICC(unsigned char keyNumber, unsigned char keyVersion, unsigned char* data,
                        unsigned char* out, unsigned long dataLength);

  /**
   * The same with a key diversified for the card (INS 0A, P1 11).
   *
   * @param keyNumber     the key's number in the module
   * @param keyVersion    its version
   * @param cardChallenge 16 bytes: the card's enciphered challenge
   * @param cardUid       7 bytes: the card's UID
   * @param out           receives 32 bytes as above
   * @return as above
   */
  bool authenticatePICC_Div(unsigned char keyNumber, unsigned char keyVersion, unsigned char* cardChallenge,
                            unsigned char* cardUid, unsigned char* out);

  /**
   * Second step of a card's authentication (INS 0A, P1 00, no Le): hands the card's answer to the module.
   *
   * @param data       the card's answer; may be null when dataLength is 0
   * @param dataLength 0 to 64 bytes
   * @return whether the reply is exactly 90 00
   */
  bool authenticatePICC(unsigned char* data, unsigned long dataLength);

  /**
   * Has the module prepare the change of a card sector's key (INS C5, P1 02). The data that is sent is
   * c, b, d, accessBytes[0..3], a.
   *
   * @param out         receives 6 bytes
   * @param outLength   receives 6
   * @param accessBytes 4 bytes
   * @param a           sent last
   * @param b           sent second
   * @param c           sent first
   * @param d           sent third
   * @return whether the reply has 8 bytes and ends 90 00
   */
  bool changeKeyMIFARE(unsigned char* out, unsigned char& outLength, unsigned char* accessBytes,
                       unsigned char a, unsigned char b, unsigned char c, unsigned char d);

  /**
   * Has the module decipher one block with the offline key (INS 0D, P1 00).
   *
   * @param in        inLength bytes, of which the first 16 are sent; may be null when inLength is 0
   * @param out       receives 16 bytes
   * @param outLength receives 16
   * @param inLength  0 to 255; with less than 16 the rest of the 16 bytes is sent as zeros
   * @return whether the reply has 18 bytes and ends 90 00
   */
  bool decipherOfflineData(char* in, char* out, char& outLength, char inLength);

  /**
   * Activates the offline key, key number 10 (INS 01, P1 01, no Le).
   *
   * Sends 10, keyVersion and the diversification input: 9 bytes in all for an input of 7 bytes, 7 bytes for
   * any other (a longer input is cut, a shorter one filled with zeros). With an input of 4 bytes the seventh
   * byte is `extra`.
   *
   * @param divInput   divLength bytes, of which at most 7 are read; may be null when divLength is 0
   * @param divLength  0 to 255
   * @param keyVersion the key's version
   * @param extra      sent behind an input of 4 bytes, else not used
   * @return whether the reply is exactly 90 00
   */
  bool activateOfflineKey(char* divInput, char divLength, char keyVersion, char extra);

  /**
   * Reads the current session key (INS D5, P1 00).
   *
   * @param out       receives 16 bytes: the session key, a secret; the caller wipes it
   * @param outLength receives 16
   * @return whether the reply has 18 bytes and ends 90 00
   */
  bool dumpSessionKey(unsigned char* out, unsigned long& outLength);

  /**
   * Has the module compute a MAC (INS 7C, P1 00). The MAC is not handed back, and the status word is not
   * examined.
   *
   * @param data       the message; may be null when dataLength is 0
   * @param dataLength 0 to 63 bytes
   * @param out        left alone
   * @param outLength  left alone
   * @return whether the exchange took place, whatever the module answered
   */
  bool generateMAC(unsigned char* data, unsigned long dataLength, unsigned char* out,
                   unsigned long& outLength);
  /** @} */

  /** @name AES-128 (FIPS 197) and AES-CMAC (RFC 4493) on the host, without the module
   *
   * They use neither the connection nor any other state of the channel. See aes.h for what an observer on the
   * same processor may learn.
   * @{ */

  /**
   * Enciphers one block in CBC fashion.
   *
   * @param key       16 bytes
   * @param in        16 bytes
   * @param inLength  not used
   * @param out       receives 16 bytes; may be `in`
   * @param outLength receives 16
   * @param iv        the chaining value, 16 bytes; receives the ciphertext
   * @return true
   */
  bool AES_Cipher(unsigned char* key, unsigned char* in, unsigned long inLength, unsigned char* out,
                  unsigned long& outLength, unsigned char* iv);

  /**
   * Deciphers one or two blocks in CBC fashion.
   *
   * @param key       16 bytes
   * @param in        16 bytes, or 32 when inLength is 32
   * @param out       receives 16 bytes when inLength is at most 16 (an array other than `in` then, see
   *                  aes_InvCipher()); receives 32 bytes when inLength and outSize both are 32; else left
   * alone
   * @param outLength left alone
   * @param iv        the chaining value, 16 bytes; receives the last block that was deciphered
   * @param outSize   the size of `out`; only looked at for two blocks
   * @param inLength  at most 16 for one block, which is always 16 bytes, or 32 for two; with any other value
   *                  nothing is read or written
   * @return true
   */
  bool AES_Decipher(unsigned char* key, unsigned char* in, unsigned char* out, unsigned long& outLength,
                    unsigned char* iv, unsigned long outSize, unsigned long inLength);

  /**
   * AES-CMAC whose chain starts from a value of the caller; from 16 zero bytes it is that of RFC 4493.
   *
   * @param data       the message; may be null when it is empty
   * @param dataLength its length in bytes, of which the low 8 bits count
   * @param key        16 bytes
   * @param cmacOut    receives 16 bytes: the CMAC
   * @param macOut     receives 8 bytes: the truncated MAC, bytes 1, 3, 5, ... 15 of the CMAC
   * @param chainOut   receives 16 bytes: the chaining value for the next MAC; may be `chainIn`
   * @param chainIn    16 bytes: the chaining value to start from; null for zeros
   */
  void calculateAESCMAC(unsigned char* data, unsigned long dataLength, unsigned char* key,
                        unsigned char* cmacOut, unsigned char* macOut, unsigned char* chainOut,
                        unsigned char* chainIn);
  /** @} */

 private:
  long connectReader(const char* name);

  SCARDCONTEXT m_context = 0;
  DWORD m_readersLength = 0;
  SCARDHANDLE m_card = 0;
  SCARD_IO_REQUEST* m_ioRequest = nullptr;  // owned; null until connect()
  int m_connected = 0;
};

#endif
