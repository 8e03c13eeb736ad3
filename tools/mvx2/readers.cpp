#include "readers.h"

#include "pcsc_names.h"
#include "text.h"

#include <winscard.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>

namespace mvx2tool {

namespace {

// PC/SC statuses are 32 bits, whatever a long is.
std::uint32_t code(LONG status) { return static_cast<std::uint32_t>(status); }

class Context {
 public:
  Context() : m_status(code(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context))) {}
  Context(const Context&) = delete;
  Context(Context&&) = delete;
  Context& operator=(const Context&) = delete;
  Context& operator=(Context&&) = delete;
  ~Context() {
    if (m_status == 0) SCardReleaseContext(m_context);
  }

  std::uint32_t status() const { return m_status; }
  SCARDCONTEXT get() const { return m_context; }

 private:
  SCARDCONTEXT m_context = 0;
  std::uint32_t m_status;
};

ReaderList listReaders(const Context& context) {
  if (context.status() != 0) return {context.status()};
  char* names = nullptr;
  auto length = SCARD_AUTOALLOCATE;
  const LONG status = SCardListReaders(context.get(), nullptr, reinterpret_cast<char*>(&names), &length);
  ReaderList list{code(status)};
  if (status != SCARD_S_SUCCESS || names == nullptr) return list;
  for (const char* name = names; *name != '\0'; name += std::strlen(name) + 1) list.names.emplace_back(name);
  SCardFreeMemory(context.get(), names);
  return list;
}

template <typename Fits>
std::vector<std::string> lastFirst(const ReaderList& list, Fits fits) {
  std::vector<std::string> found;
  std::copy_if(list.names.rbegin(), list.names.rend(), std::back_inserter(found), fits);
  return found;
}

// Sends the empty command and looks at the reader's reply alone.
void transmit(SCARDHANDLE card, DWORD protocol, Probe& probe) {
  const std::array<unsigned char, 6> command = {0xFF, 0x00, 0x00, 0x00, 0x01, '\r'};
  const SCARD_IO_REQUEST pci = {protocol, sizeof pci};
  std::array<char, 69> reply{};
  DWORD length = reply.size();
  probe.status = code(SCardTransmit(card, &pci, command.data(), command.size(), nullptr,
                                    reinterpret_cast<unsigned char*>(reply.data()), &length));
  if (probe.status == 0 && (length < 2 || reply[0] != '\x61'))
    probe.reply = hexBytes({reply.data(), std::min<std::size_t>(length, reply.size())});
}

std::string selectName(Select select) {
  return select == Select::any ? "terminal" : select == Select::mvx3 ? "MVX3 terminal" : "other terminal";
}

Problem noTerminal(const ReaderList& list, Select select) {
  Problem problem;
  if (list.names.empty()) {
    problem.message = "no PC/SC reader is plugged in";
    problem.hint = statusRemedy(0x8010002E);
    return problem;
  }
  problem.message = "no reader of a" + std::string(select == Select::other ? "n " : " ") +
                    selectName(select) + " among: " + join(list.names, ", ");
  problem.hint = terminals(list, Select::any).empty()
                     ? "plug the terminal in; mvx2 doctor shows each reader's role"
                     : "another kind of terminal is there: leave --reader out";
  return problem;
}

}  // namespace

ReaderList listReaders() { return listReaders(Context()); }

bool isTerminal(const std::string& name, Select select) {
  std::string upper = name;
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  const auto holds = [&upper](const char* word) { return upper.find(word) != std::string::npos; };
  if (!holds("KRV") && !holds("VELMORIN")) return false;
  return select == Select::any || holds("MVX3") == (select == Select::mvx3);
}

bool isSam(const std::string& name) {
  const auto holds = [&name](const char* word) { return name.find(word) != std::string::npos; };
  return holds("ACS") || holds("ACR") || holds("CCID");
}

std::string roleOf(const std::string& name) {
  std::vector<std::string> roles;
  if (isTerminal(name, Select::any))
    roles.emplace_back(isTerminal(name, Select::mvx3) ? "terminal (mvx3)" : "terminal (other)");
  if (isSam(name)) roles.emplace_back("SAM");
  return roles.empty() ? "none" : join(roles, ", ");
}

std::vector<std::string> terminals(const ReaderList& list, Select select) {
  return lastFirst(list, [select](const std::string& name) { return isTerminal(name, select); });
}

std::vector<std::string> sams(const ReaderList& list) { return lastFirst(list, isSam); }

Probe probeTerminal(Select select) {
  const Context context;
  const ReaderList list = listReaders(context);
  const std::vector<std::string> fitting = terminals(list, select);
  Probe probe;
  probe.status = list.status;
  if (fitting.empty()) return probe;

  probe.reader = fitting.front();
  SCARDHANDLE card = 0;
  DWORD protocol = 0;
  probe.status = code(SCardConnect(context.get(), probe.reader.c_str(), SCARD_SHARE_SHARED,
                                   SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &card, &protocol));
  if (probe.status != 0) return probe;
  probe.connected = true;
  transmit(card, protocol, probe);
  SCardDisconnect(card, SCARD_LEAVE_CARD);
  return probe;
}

Problem diagnose(const std::string& operation, Select select) {
  const Probe probe = probeTerminal(select);
  Problem problem;
  if (probe.reader.empty()) {
    const ReaderList list = listReaders();
    const bool hasNoReaders = list.status == 0 || list.status == 0x8010002E;
    if (hasNoReaders) problem = noTerminal(list, select);
    problem.exit = Exit::noReader;
    // A list without the terminal is no error of PC/SC.
    if (list.status != 0) problem.status = list.status;
    if (!hasNoReaders) {
      problem.message = "no PC/SC daemon (pcscd) answers";
      problem.hint = statusRemedy(list.status);
    }
    problem.operation = operation;
    return problem;
  }
  problem.exit = Exit::noAnswer;
  problem.operation = operation;
  problem.reader = probe.reader;
  problem.status = probe.status;
  problem.message =
      probe.connected ? "no answer from the terminal" : "the terminal's reader cannot be connected";
  problem.hint = statusRemedy(probe.status);
  if (probe.status == 0) problem.hint = "the terminal answers again: repeat the command";
  if (probe.reply)
    problem.hint = "the reader answered " + *probe.reply + ", not as a terminal's: see mvx2 doctor";
  return problem;
}

}  // namespace mvx2tool
