/**
 * @file
 * The device facade: the host application's handle on a card terminal.
 */
#ifndef MVX2_MVX2INTERFACES_H
#define MVX2_MVX2INTERFACES_H

#include <mvx2/export.h>

#include <cstdint>
#include <ostream>
#include <string>

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
 * **Commands.** A command sends one line to the terminal, a word with or without a value, and converts the
 * one line or text that comes back. Most commands exist twice: as a typed method and as a text method with
 * the suffix `_CPtr`. No value is checked here: what a field means and which values it takes is the
 * terminal's, and whatever it answers, an error text included, is the reply.
 *
 * **Typed methods** convert the reply as strtol() does in base 10 and keep the low bits that the result type
 * holds: 300 is 44 as an `unsigned char`, a text without digits is 0, and a `bool` is whether the number is
 * other than 0. Where a method says *hexadecimal*, the whole reply is read as one hexadecimal number with or
 * without 0x, again keeping the low bits; a character that is no digit counts as a digit of value 255.
 *
 * **Setters** send the value in decimal as a signed 32-bit number, so that an `unsigned int` above 2147483647
 * goes out negative, and return the reply as a number.
 *
 * **Text methods** return the reply as it stands, NUL-terminated, in a buffer of their own: an empty one of
 * 128 NULs at first. It is valid until the next call of the same method, through whichever facade, and never
 * to be freed. The texts they take are NUL-terminated, sent unchanged after the word and a blank, and not
 * kept. A null text counts as a failure. A line of more than 64 bytes with its carriage return is not sent,
 * as in an exchange that fails on the way.
 *
 * **Neutral values** are what a method returns after a failure:
 *
 * | result                                                   | value          |
 * |----------------------------------------------------------|----------------|
 * | `int` of a getter                                        | -1             |
 * | `int` of a setter, of addGrp() and of a card action      | -999999        |
 * | `unsigned char`                                          | 255            |
 * | `unsigned short`                                         | 65535          |
 * | `bool`                                                   | false          |
 * | a list                                                   | ten zeros      |
 * | a text                                                   | "No connected" |
 *
 * **Without a channel** nothing is sent or logged, and a method returns its neutral value too, with these
 * exceptions: the text setters, getValue_CPtr() and getUOffset_CPtr() return what their buffer holds since
 * their last call, and sendAPDU() returns an empty text. The setters of keys are not among them. With
 * external exceptions on, every one of these calls is a failure instead.
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

  /** @name Instances
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
  /** @} */

  /** @name Lifecycle and connection
   * @{ */

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

  /** @name Raw exchanges
   * @{ */

  /**
   * Sends a line of the caller's and returns the answer cut out of the reply.
   * @param text the line; a carriage return is appended unless it holds one
   */
  const char* transaction(const char* text);

  /**
   * Sends a text as it is and returns all that comes back: echo, answer, prompt and the reader's status
   * bytes, which may hold NULs.
   */
  const char* noFormatedTransaction(const char* text);

  /**
   * Sends a buffer to the reader as it is and returns all that comes back with the reader's status bytes, in
   * which NULs may stand. Logs as "value". Every call clears the buffer of 128 characters first.
   *
   * @param apdu   the bytes to send; may be null when length is 0
   * @param length 0 to 64; more is a failure
   * @return the reply; an empty text without a channel, "No connected" after a failure
   */
  const char* sendAPDU(const char* apdu, unsigned char length);
  /** @} */

  /** @name Card values
   * @{ */

  /** The value on the card, "value". */
  int getValue();
  const char* getValue_CPtr(); /**< The same as text; keeps its buffer without a channel. */
  /** Writes the value on the card, "value". */
  int setValue(int value);
  const char* setValue_CPtr(const char* text); /**< The same with a text. */

  /** The amount credited, "credit". */
  int getCredit();
  const char* getCredit_CPtr(); /**< The same as text. */

  /** The amount debited, "debit". */
  int getDebit();
  const char* getDebit_CPtr(); /**< The same as text. */

  /** The highest value, "maxval". */
  int getMaxVal();
  const char* getMaxVal_CPtr(); /**< The same as text. */
  /** Writes the highest value, "maxval". */
  int setMaxVal(unsigned int maxVal);
  const char* setMaxVal_CPtr(const char* text); /**< The same with a text. */

  /** Whether values are added, "addval". */
  bool getAddVal();
  const char* getAddVal_CPtr(); /**< The same as text. */
  /** Writes whether values are added, "addval", as 0 or 1. */
  int setAddVal(bool addVal);
  const char* setAddVal_CPtr(const char* text); /**< The same with a text. */
  /** @} */

  /** @name Counters
   * @{ */

  /** The count of write errors, "wrerrs". */
  int getWrerrs();
  const char* getWrerrs_CPtr(); /**< The same as text. */

  /** The count of transactions, "trs". */
  int getTrs();
  const char* getTrs_CPtr(); /**< The same as text. */

  /** The card's count of credits, "ccredit": 0 to 65535. */
  unsigned short getCCredit();
  const char* getCCredit_CPtr(); /**< The same as text. */

  /** The card's count of debits, "cdebit": 0 to 65535. */
  unsigned short getCDebit();
  const char* getCDebit_CPtr(); /**< The same as text. */

  /** The card's count of transactions, "ctrs". */
  int getCTrs();
  const char* getCTrs_CPtr(); /**< The same as text. */

  /** The last terminal, "lastmvx2". */
  int getLastMVX2();
  const char* getLastMVX2_CPtr(); /**< The same as text. */
  /** @} */

  /** @name Card actions
   * @{ */

  /** Reads the card, "read". */
  int readCard();
  const char* readCard_CPtr(); /**< The same as text. */

  /** Reads the card, "fread". */
  int fReadCard();
  const char* fReadCard_CPtr(); /**< The same as text. */

  /** Writes the card, "write". */
  int writeCard();
  const char* writeCard_CPtr(); /**< The same as text. */

  /** Reads the personalisation, "persoread". */
  int persoread();
  const char* persoread_CPtr(); /**< The same as text. */

  /** Creates the personalisation, "persocreate". */
  int persocreate();
  const char* persocreate_CPtr(); /**< The same as text. */

  /** The card switch, "switch". Logs as "switchCard". */
  bool getSwitch();
  const char* getSwitch_CPtr(); /**< The same as text. */
  /** @} */

  /** @name Purses and groups
   * @{ */

  /** The number of the purse in use, "purse". */
  int getPurse();
  const char* getPurse_CPtr(); /**< The same as text. */
  /** Writes the number of the purse, "purse". */
  int setPurse(unsigned int purse);
  const char* setPurse_CPtr(const char* text); /**< The same with a text. */

  /** Changes to a purse, "chpurse". */
  int chPurse(unsigned int purse);
  const char* chPurse_CPtr(const char* text); /**< The same with a text. */

  /** Deletes a purse, "delpurse". */
  int delPurse(unsigned int purse);
  const char* delPurse_CPtr(const char* text); /**< The same with a text. */

  /**
   * The numbers of the purses, "listpurses": one from each line of the reply.
   *
   * A list of fewer than ten ends with a 0, which cannot be told from a number 0; what follows the tenth is
   * dropped.
   *
   * @return ten entries, owned by the library; the pointer is the same for every call of this method, which
   * replaces the entries
   */
  unsigned int* getListPurses();
  const char* getListPurses_CPtr(); /**< The whole reply, line feeds included. */

  /** Adds a group, "addgrp". */
  int addGrp();
  const char* addGrp_CPtr(); /**< The same as text. */

  /** Deletes a group, "delgrp". */
  int delGrp(unsigned int group);
  const char* delGrp_CPtr(const char* text); /**< The same with a text. */

  /** The numbers of the groups, "listgrp": as getListPurses(), in a list of its own. Logs as "listpurses". */
  unsigned int* getListGrp();
  const char* getListGrp_CPtr(); /**< The whole reply, line feeds included. */
  /** @} */

  /** @name Identity
   * @{ */

  /** The card's identifier, "cardid": hexadecimal, all 32 bits, so that it may be negative. */
  int getCardId();
  const char* getCardId_CPtr(); /**< The reply unconverted. */

  /** The serial number, "serial". */
  int getSerial();
  const char* getSerial_CPtr(); /**< The same as text. */

  /** The issuer code, "issuer": hexadecimal, 0 to 65535. */
  unsigned short getIssuer();
  const char* getIssuer_CPtr(); /**< The reply unconverted. */
  /** Writes the issuer code, "issuer", in decimal although it is read in hexadecimal. */
  int setIssuer(unsigned short issuer);
  const char* setIssuer_CPtr(const char* text); /**< The same with a text. */

  /** The account number, "account". */
  int getAccount();
  const char* getAccount_CPtr(); /**< The same as text. */
  /** Writes the account number, "account". */
  int setAccount(unsigned int account);
  const char* setAccount_CPtr(const char* text); /**< The same with a text. */

  /** The PIN code, "pincode": 0 to 65535. */
  unsigned short getPincode();
  const char* getPincode_CPtr(); /**< The same as text. */
  /** Writes the PIN code, "pincode". */
  int setPincode(unsigned short pincode);
  const char* setPincode_CPtr(const char* text); /**< The same with a text. */

  /** The department, "department": 0 to 65535. */
  unsigned short getDepartment();
  const char* getDepartment_CPtr(); /**< The same as text. */
  /** Writes the department, "department". */
  int setDepartment(unsigned short department);
  const char* setDepartment_CPtr(const char* text); /**< The same with a text. */

  /** The category, "category": 0 to 255. */
  unsigned char getCategory();
  const char* getCategory_CPtr(); /**< The same as text. */
  /** Writes the category, "category". */
  int setCategory(unsigned char category);
  const char* setCategory_CPtr(const char* text); /**< The same with a text. */
  /** @} */

  /** @name Points and modes
   * @{ */

  /** The points, "pts": 0 to 255. */
  unsigned char getPts();
  const char* getPts_CPtr(); /**< The same as text. */
  /** Writes the points, "pts". */
  int setPts(unsigned char pts);
  const char* setPts_CPtr(const char* text); /**< The same with a text. */

  /** The field "ptsi": 0 to 255. */
  unsigned char getPtsI();
  const char* getPtsI_CPtr(); /**< The same as text. */
  /** Writes the field "ptsi". */
  int setPtsI(unsigned char ptsI);
  const char* setPtsI_CPtr(const char* text); /**< The same with a text. */

  /** The terminal's mode, "mode": 0 to 255. */
  unsigned char getMode();
  const char* getMode_CPtr(); /**< The same as text. */
  /** Writes the terminal's mode, "mode". */
  int setMode(unsigned char mode);
  const char* setMode_CPtr(const char* text); /**< The same with a text. */

  /** The field "pmode": 0 to 255. Logs as "cTrs". */
  unsigned char getPMode();
  const char* getPMode_CPtr(); /**< The same as text; logs as "cTrs" too. */

  /** The field "freq": hexadecimal, 0 to 255. */
  unsigned char getFreq();
  const char* getFreq_CPtr(); /**< The reply unconverted. */
  /** Writes the field "freq", in decimal although it is read in hexadecimal. */
  int setFreq(int freq);
  const char* setFreq_CPtr(const char* text); /**< The same with a text. */
  /** @} */

  /** @name User area and sectors
   * @{ */

  /** The user offset, "uoffset": 0 to 255. */
  unsigned char getUOffset();
  const char* getUOffset_CPtr(); /**< The same as text; keeps its buffer without a channel. */
  /** Writes the user offset, "uoffset". */
  int setUOffset(unsigned char uOffset);
  const char* setUOffset_CPtr(const char* text); /**< The same with a text. */

  /** The user sector, "usector": 0 to 255. */
  unsigned char getUSector();
  const char* getUSector_CPtr(); /**< The same as text. */
  /** Writes the user sector, "usector". */
  int setUSector(unsigned char uSector);
  const char* setUSector_CPtr(const char* text); /**< The same with a text. */

  /** The user option, "uoption": hexadecimal, 0 to 65535. */
  unsigned short getUOption();
  const char* getUOption_CPtr(); /**< The reply unconverted. */
  /** Writes the user option, "uoption", in decimal although it is read in hexadecimal. */
  int setUOption(unsigned short uOption);
  const char* setUOption_CPtr(const char* text); /**< The same with a text. */

  /** The user flag identifier, "uflagid": hexadecimal, 0 to 65535. */
  unsigned short getUFlagId();
  const char* getUFlagId_CPtr(); /**< The reply unconverted. */
  /** Writes the user flag identifier, "uflagid", in decimal although it is read in hexadecimal. */
  int setUFlagId(unsigned short uFlagId);
  const char* setUFlagId_CPtr(const char* text); /**< The same with a text. */

  /** The sector word, "sectors": hexadecimal, 0 to 65535. */
  unsigned short getSectors();
  const char* getSectors_CPtr(); /**< The reply unconverted. */
  /** Writes the sector word, "sectors", in hexadecimal with 0x: the one number that is not sent in decimal.
   */
  int setSectors1(unsigned short sectors);
  /**
   * Writes the sector word, "sectors", in decimal.
   * @param first  accepted and ignored
   * @param second what is sent
   */
  int setSectors2(unsigned char first, unsigned char second);
  const char* setSectors_CPtr(const char* text); /**< Writes the sector word as a text. */
  /** @} */

  /** @name Keys
   *
   * A key is a text that the terminal judges: neither its length nor its digits are checked here. Without a
   * channel each of these methods returns "No connected", so that a caller never sees a stale key.
   * @{ */

  const char* setFreeKey1_CPtr(const char* key); /**< Writes the first free key, "freekey1". */
  const char* getFreeKey1_CPtr();                /**< Reads it back. */

  const char* setFreeKey2_CPtr(const char* key); /**< Writes the second free key, "freekey2". */
  const char* getFreeKey2_CPtr();                /**< Reads it back. */

  const char* setMadKey_CPtr(const char* key); /**< Writes the MAD key, "madkey". */
  const char* getMadKey_CPtr();                /**< Reads it back. */

  const char* setUKeyA_CPtr(const char* key); /**< Writes the user key A, "ukeya". */
  const char* getUKeyA_CPtr();                /**< Reads it back. */
  /** @} */

  /** @name Control of the terminal
   * @{ */

  const char* getVersion_CPtr();     /**< The version of the firmware, "version". */
  const char* getBootVersion_CPtr(); /**< The version of the boot loader, "vboot". Logs as "bootversion". */

  /** Beeps, "beep". @param duration sent with the word, as setters send a value, unless it is 0 */
  void beep(unsigned int duration);
  void beep_CPtr(const char* text); /**< Beeps, "beep", with a text. */

  void reboot(); /**< Restarts the terminal, "reboot". */
  void quit();   /**< Leaves the command mode, "q". Logs as "quit". */
  void online(); /**< Goes on line, "online". */

  /** Whether the boot loader runs: its prompt '#' starts the last line of the reply to a carriage return. */
  bool isBootloader();

  /** Whether the on-line mode runs: its prompt '$' starts the last line of the reply to a carriage return. */
  bool isOnline();
  /** @} */

 private:
  explicit MVX2Interfaces(int readerSelect);
  ~MVX2Interfaces();

  bool tryToConnect();
  void dropChannel() noexcept;

  // What became of a command, and what a text method returns without a channel: "No connected", or what its
  // buffer holds.
  enum class Outcome { done, notReady, failed };
  enum class NotReady { saysSo, keepsText };

  class Exchange;  // what a command does with the channel to get the reply

  // The handler of every command, and the commands' shapes.
  Outcome attempt(const char* label, const Exchange& exchange, std::string& reply);
  long decimalReply(const char* label, const Exchange& exchange, long neutral);
  template <typename T>
  T number(const char* word, const char* label, T neutral = static_cast<T>(-1));
  template <typename T>
  T hexadecimal(const char* word, const char* label);
  int set(const char* word, std::int64_t value, const char* label);
  unsigned int* list(const char* word, const char* label, unsigned int (&response)[10]);
  void send(const char* word, const char* label);
  bool showsPrompt(char prompt, const char* label);
  const char* replyText(const char* label, char (&response)[128], NotReady notReady,
                        const Exchange& exchange);
  const char* text(const char* word, const char* label, char (&response)[128],
                   NotReady notReady = NotReady::saysSo);
  const char* setText(const char* word, const char* text, const char* label, char (&response)[128],
                      NotReady notReady = NotReady::keepsText);

  static MVX2Interfaces* m_instance[2];

  Channel* m_channel = nullptr;  // owned; null when not connected
  ConnectMode_t m_mode = CONNECT_DEFAULT;
  bool m_externalException = false;
  int m_readerSelect;
  std::ostream m_log;
};

}  // namespace velmorin

#endif
