/**
 * @file
 * The PC/SC transport to the card terminal.
 */
#ifndef MVX2_USBCHANNEL_H
#define MVX2_USBCHANNEL_H

#include <mvx2/Channel.h>
#include <mvx2/export.h>

#include <winscard.h>

#include <string>

/**
 * Reaches a terminal that presents itself as a PC/SC reader. Each text command travels inside a reader APDU
 * (class FF): `FF 00 00 00 Lc data`; the terminal answers 61 n, and `FF C0 00 00 n` fetches the n answer
 * bytes. Raw buffers travel the same way with P1 = 01.
 *
 * Every exchange is bracketed by a PC/SC reader transaction, which keeps other processes that share the
 * reader from interleaving theirs.
 */
class MVX2_API USBChannel : public Channel {
 public:
  /**
   * Finds the terminal's reader and connects to it in shared mode.
   *
   * Readers are tried from the last listed to the first. One qualifies when its name, letter case ignored,
   * holds "KRV" or "VELMORIN"; `readerSelect` then chooses by the model name "MVX3".
   *
   * An empty, non-null reader list makes a channel without a card: the object exists, and each of its text
   * exchanges yields an empty reply.
   *
   * @param readerSelect 0: a reader without "MVX3" in its name; 1: one with it; -1: either; else: none
   * @throws MVX2Exception when PC/SC fails or no reader is accepted ("dwAP"); nothing stays acquired then
   */
  explicit USBChannel(int readerSelect);

  USBChannel(const USBChannel&) = delete;
  USBChannel(USBChannel&&) = delete;
  USBChannel& operator=(const USBChannel&) = delete;
  USBChannel& operator=(USBChannel&&) = delete;

  /** Disconnects, leaving the card as it is, and releases the PC/SC context. */
  ~USBChannel() override;

  /**
   * One text exchange.
   *
   * A failure after the reader transaction was begun leaves that transaction open until the channel goes.
   *
   * @param request up to 64 bytes; a longer one is refused before any PC/SC call
   * @return the answer bytes with the trailing SW1 SW2, at most 69 bytes; empty on any failure
   */
  std::string mvx2NoFormattedTransaction(const std::string& request) override;

  /**
   * One raw exchange. The reader transaction is always ended.
   *
   * @param data   the bytes to send; may be null when length is 0
   * @param length 0 to 64
   * @return the answer bytes with the trailing SW1 SW2, at most 69 bytes
   * @throws MVX2Exception  when the reader transaction cannot be begun or ended
   * @throws std::exception (exactly that type) for every other failure: a length out of range, a null buffer
   *                        with a length (both before any PC/SC call), a failed transmit, a malformed reply
   */
  std::string mvx2APDUTransaction(const char* data, int length) override;

 private:
  void connectReader(int readerSelect);

  SCARDCONTEXT m_context = 0;
  SCARDHANDLE m_card = 0;
  SCARD_IO_REQUEST* m_sendPci = nullptr;  // owned; null until connected
};

#endif
