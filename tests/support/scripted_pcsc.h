// A scripted stand-in for pcsc-lite. A test program that links it defines the SCard functions and sleep(),
// which then win over the shared ones: the shipped library runs unchanged, without a daemon, a reader or a
// pause.
#ifndef MVX2_TESTS_SCRIPTED_PCSC_H
#define MVX2_TESTS_SCRIPTED_PCSC_H

#include <winscard.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace mvx2test {

using Bytes = std::vector<unsigned char>;

// "FF 00 0A"
std::string hex(const Bytes& bytes);
// The bytes of a text.
Bytes bytesOf(const std::string& text);

// What one SCardTransmit gives back.
struct TransmitReply {
  Bytes bytes;                            // copied as far as the caller's buffer reaches
  LONG status = SCARD_S_SUCCESS;          // returned
  DWORD length = static_cast<DWORD>(-1);  // reported; -1: as many as there are bytes
};

class ScriptedPcsc {
 public:
  // The one stand-in of the process; reset it at the start of each test.
  static ScriptedPcsc& instance();
  void reset();

  // What PC/SC shows: readers as they are listed, a list that is null, what SCardConnect negotiates.
  std::vector<std::string> readers;
  bool listIsNull = false;
  DWORD activeProtocol = SCARD_PROTOCOL_T1;

  // Makes the nth coming call of a function return this status, without any other effect.
  void fail(const std::string& function, LONG status, int nth = 1);

  // What the coming SCardTransmit calls give back, in order. When the script is used up: 61 00.
  void reply(const Bytes& bytes) { replies.push_back({bytes}); }
  void reply(const TransmitReply& reply) { replies.push_back(reply); }
  // Both replies of one terminal exchange: 61 n, and these answer bytes followed by 90 00.
  void answer(const std::string& raw);
  // The same with the frame of the protocol around the text: echo, text, prompt.
  void answerLine(const std::string& text, char prompt = '>');
  std::deque<TransmitReply> replies;

  // Every call since reset() with its arguments, for example "SCardConnect(context 1, KRV, share 2, protocols
  // 3)".
  std::vector<std::string> calls;
  // The names alone.
  std::vector<std::string> callNames() const;
  // The APDUs that were transmitted.
  std::vector<Bytes> apdus;
  // The data of the text and raw commands among them (FF 00 xx 00 Lc data), as texts.
  std::vector<std::string> requests() const;
  // Runs at the start of each SCard function with its name, if set. What it throws reaches the caller.
  std::function<void(const std::string&)> onCall;
  // Runs at the start of each SCardTransmit, if set.
  std::function<void()> onTransmit;

  // What is acquired and not given back.
  int openContexts = 0;
  int openCards = 0;
  int openLists = 0;
  int openTransactions = 0;

  // Keeps a call and says which status it shall return. For the functions of the stand-in.
  LONG enter(const std::string& function, const std::string& arguments);

  // Keeps a list of readers until it is given back. For the functions of the stand-in.
  char* keepList(const std::string& names);
  bool giveListBack(const void* list);

 private:
  std::vector<std::unique_ptr<char[]>> lists;
  std::map<std::string, std::map<int, LONG>> failures;  // by function, by number of coming calls
};

}  // namespace mvx2test

#endif
