#include "support/scripted_pcsc.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace mvx2test {
namespace {

constexpr SCARDCONTEXT the_context = 1;
constexpr SCARDHANDLE the_card = 101;

std::string number(long value) { return std::to_string(value); }

}  // namespace

std::string hex(const Bytes& bytes) {
  const char* const digits = "0123456789ABCDEF";
  std::string text;
  for (const unsigned char byte : bytes) {
    if (!text.empty()) text += ' ';
    text += digits[byte >> 4];
    text += digits[byte & 0xF];
  }
  return text;
}

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

ScriptedPcsc& ScriptedPcsc::instance() {
  static ScriptedPcsc pcsc;
  return pcsc;
}

void ScriptedPcsc::reset() {
  *this = ScriptedPcsc();
  readers = {"KRV MVX3 Terminal 00 00"};
}

void ScriptedPcsc::fail(const std::string& function, LONG status, int nth) {
  failures[function][nth] = status;
}

void ScriptedPcsc::answer(const std::string& raw) {
  Bytes bytes = bytesOf(raw);
  reply({0x61, static_cast<unsigned char>(bytes.size())});
  bytes.insert(bytes.end(), {0x90, 0x00});
  reply(bytes);
}

void ScriptedPcsc::answerLine(const std::string& text, char prompt) {
  answer("echo\r\n" + text + "\r\n" + prompt);
}

std::vector<std::string> ScriptedPcsc::callNames() const {
  std::vector<std::string> names;
  for (const std::string& call : calls) names.push_back(call.substr(0, call.find('(')));
  return names;
}

std::vector<std::string> ScriptedPcsc::requests() const {
  std::vector<std::string> requests;
  for (const Bytes& apdu : apdus)
    if (apdu.size() >= 5 && apdu[0] == 0xFF && apdu[1] == 0x00)
      requests.emplace_back(apdu.begin() + 5, apdu.end());
  return requests;
}

LONG ScriptedPcsc::enter(const std::string& function, const std::string& arguments) {
  if (onCall) onCall(function);
  calls.push_back(function + "(" + arguments + ")");
  const auto found = failures.find(function);
  if (found == failures.end()) return SCARD_S_SUCCESS;
  LONG status = SCARD_S_SUCCESS;
  std::map<int, LONG> still;
  for (const auto& [left, failure] : found->second) {
    if (left == 1)
      status = failure;
    else
      still[left - 1] = failure;
  }
  found->second = still;
  return status;
}

char* ScriptedPcsc::keepList(const std::string& names) {
  lists.push_back(std::make_unique<char[]>(names.size()));
  ++openLists;
  return std::copy(names.begin(), names.end(), lists.back().get()) - names.size();
}

bool ScriptedPcsc::giveListBack(const void* list) {
  const auto found =
      std::find_if(lists.begin(), lists.end(), [list](const auto& kept) { return kept.get() == list; });
  if (found == lists.end()) return false;
  lists.erase(found);
  --openLists;
  return true;
}

}  // namespace mvx2test

using mvx2test::Bytes;
using mvx2test::number;
using mvx2test::ScriptedPcsc;

namespace {

ScriptedPcsc& pcsc() { return ScriptedPcsc::instance(); }

std::string pciText(const SCARD_IO_REQUEST* pci) {
  if (pci == nullptr) return "null";
  return "{" + number(static_cast<long>(pci->dwProtocol)) + ", " +
         number(static_cast<long>(pci->cbPciLength)) + "}";
}

}  // namespace

extern "C" {

LONG SCardEstablishContext(DWORD scope, LPCVOID reserved1, LPCVOID reserved2, LPSCARDCONTEXT context) {
  const bool plain = reserved1 == nullptr && reserved2 == nullptr;
  const LONG status = pcsc().enter("SCardEstablishContext",
                                   "scope " + number(static_cast<long>(scope)) + (plain ? "" : ", reserved"));
  if (status != SCARD_S_SUCCESS) return status;
  ++pcsc().openContexts;
  *context = mvx2test::the_context;
  return status;
}

LONG SCardReleaseContext(SCARDCONTEXT context) {
  const LONG status = pcsc().enter("SCardReleaseContext", "context " + number(context));
  if (context != mvx2test::the_context) return SCARD_E_INVALID_HANDLE;
  if (status == SCARD_S_SUCCESS) --pcsc().openContexts;
  return status;
}

LONG SCardListReaders(SCARDCONTEXT context, LPCSTR groups, LPSTR readers, LPDWORD length) {
  const bool allocates = *length == SCARD_AUTOALLOCATE;
  const LONG status =
      pcsc().enter("SCardListReaders", "context " + number(context) + (groups == nullptr ? "" : ", groups") +
                                           (allocates ? ", auto-allocated" : ""));
  if (status != SCARD_S_SUCCESS || pcsc().listIsNull) return status;
  std::string list;
  for (const std::string& reader : pcsc().readers) list += reader + '\0';
  list += '\0';
  char* const kept = pcsc().keepList(list);
  std::memcpy(readers, &kept, sizeof kept);
  *length = list.size();
  return status;
}

LONG SCardFreeMemory(SCARDCONTEXT context, LPCVOID memory) {
  const LONG status = pcsc().enter("SCardFreeMemory", "context " + number(context));
  if (status != SCARD_S_SUCCESS) return status;
  return pcsc().giveListBack(memory) ? SCARD_S_SUCCESS : SCARD_E_INVALID_PARAMETER;
}

LONG SCardConnect(SCARDCONTEXT context, LPCSTR reader, DWORD share, DWORD protocols, LPSCARDHANDLE card,
                  LPDWORD activeProtocol) {
  const LONG status = pcsc().enter("SCardConnect", "context " + number(context) + ", " + reader + ", share " +
                                                       number(static_cast<long>(share)) + ", protocols " +
                                                       number(static_cast<long>(protocols)));
  if (status != SCARD_S_SUCCESS) return status;
  ++pcsc().openCards;
  *card = mvx2test::the_card;
  *activeProtocol = pcsc().activeProtocol;
  return status;
}

LONG SCardDisconnect(SCARDHANDLE card, DWORD disposition) {
  const LONG status = pcsc().enter(
      "SCardDisconnect", "card " + number(card) + ", disposition " + number(static_cast<long>(disposition)));
  if (card != mvx2test::the_card) return SCARD_E_INVALID_HANDLE;
  if (status != SCARD_S_SUCCESS) return status;
  --pcsc().openCards;
  pcsc().openTransactions = 0;
  return status;
}

LONG SCardBeginTransaction(SCARDHANDLE card) {
  const LONG status = pcsc().enter("SCardBeginTransaction", "card " + number(card));
  if (status != SCARD_S_SUCCESS) return status;
  if (card != mvx2test::the_card) return SCARD_E_INVALID_HANDLE;
  ++pcsc().openTransactions;
  return status;
}

LONG SCardEndTransaction(SCARDHANDLE card, DWORD disposition) {
  const LONG status = pcsc().enter("SCardEndTransaction", "card " + number(card) + ", disposition " +
                                                              number(static_cast<long>(disposition)));
  if (status == SCARD_S_SUCCESS) --pcsc().openTransactions;
  return status;
}

LONG SCardTransmit(SCARDHANDLE card, const SCARD_IO_REQUEST* sendPci, LPCBYTE command, DWORD commandLength,
                   SCARD_IO_REQUEST* receivePci, LPBYTE reply, LPDWORD replyLength) {
  if (pcsc().onTransmit) pcsc().onTransmit();
  const Bytes apdu(command, command + commandLength);
  const LONG failure = pcsc().enter(
      "SCardTransmit", "card " + number(card) + ", pci " + pciText(sendPci) + " " + pciText(receivePci) +
                           ", " + mvx2test::hex(apdu) + ", room " + number(static_cast<long>(*replyLength)));
  pcsc().apdus.push_back(apdu);
  if (failure != SCARD_S_SUCCESS) return failure;

  mvx2test::TransmitReply scripted{{0x61, 0x00}};
  if (!pcsc().replies.empty()) {
    scripted = pcsc().replies.front();
    pcsc().replies.pop_front();
  }
  const std::size_t copied = std::min<std::size_t>(scripted.bytes.size(), *replyLength);
  std::copy_n(scripted.bytes.begin(), copied, reply);
  const bool counts = scripted.length == static_cast<DWORD>(-1);
  *replyLength = counts ? scripted.bytes.size() : scripted.length;
  return scripted.status;
}

unsigned int sleep(unsigned int seconds) {
  if (pcsc().onCall) pcsc().onCall("sleep");
  pcsc().calls.push_back("sleep(" + std::to_string(seconds) + ")");
  return 0;
}

}  // extern "C"
