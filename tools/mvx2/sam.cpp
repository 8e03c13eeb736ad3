#include "sam.h"

#include "interrupt.h"
#include "pcsc_names.h"
#include "text.h"

#include <array>

namespace mvx2tool {

namespace {

constexpr auto pause = std::chrono::seconds(1);

std::string chosenReader() {
  const std::vector<std::string> fitting = sams(listReaders());
  return fitting.empty() ? "" : fitting.front();
}

[[noreturn]] void failToConnect(long status, const std::string& reader) {
  Problem problem;
  problem.operation = "sam connect";
  // A list without a SAM's reader is no error of PC/SC.
  if (status != 0) problem.status = static_cast<std::uint32_t>(status);
  problem.reader = reader;
  problem.exit = reader.empty() ? Exit::noReader : Exit::noAnswer;
  problem.message = "the SAM in its reader cannot be connected";
  problem.hint = statusRemedy(static_cast<std::uint32_t>(status));
  if (reader.empty() && status == 0) {
    problem.message = "no reader of a SAM is plugged in";
    problem.hint = "plug it in: its name holds ACS, ACR or CCID; mvx2 doctor shows each reader's role";
  }
  throw Failure(std::move(problem));
}

}  // namespace

Sam::Sam(const Tool& tool) : m_reader(chosenReader()) {
  long status = m_channel.connect();
  for (int attempt = 2; attempt <= tool.attempts && !m_channel.isConnected(); ++attempt) {
    tool.output.notice({{"event", "attempt"}, {"attempt", attempt}, {"of", tool.attempts}},
                       "Attempt " + std::to_string(attempt) + " of " + std::to_string(tool.attempts));
    interrupt::wait(pause);
    m_channel.disconnect();
    m_reader = chosenReader();
    status = m_channel.connect();
  }
  if (!m_channel.isConnected()) failToConnect(status, m_reader);
}

void Sam::fail(const std::string& operation, long status) const {
  Problem problem;
  problem.exit = Exit::noAnswer;
  problem.message = "no answer from the SAM";
  problem.operation = operation;
  problem.reader = m_reader;
  problem.status = static_cast<std::uint32_t>(status);
  problem.hint = statusRemedy(*problem.status);
  throw Failure(std::move(problem));
}

std::string Sam::serial() {
  std::array<char, 7> serial{};
  constexpr long untouched = 1;
  long status = untouched;
  if (m_channel.getVersion(serial.data(), status, serial.size()))
    return hexBytes({serial.data(), serial.size()});
  Problem problem;
  problem.operation = "sam status";
  problem.reader = m_reader;
  problem.exit = status == untouched ? Exit::noAnswer : Exit::refused;
  problem.message =
      status == untouched ? "no answer from the SAM" : "the SAM's version record is none that is known";
  problem.hint = status == untouched ? "take the SAM out and put it back, then mvx2 doctor"
                                     : "use a SAM of this system: vendor 4, type 1, version above 2.1";
  throw Failure(std::move(problem));
}

void Sam::unlock(const std::string& key) {
  std::array<unsigned char, 16> bytes{};
  std::copy(key.begin(), key.end(), bytes.begin());
  long status = 0;
  const bool unlocked = m_channel.unlock(bytes.data(), status, bytes.size());
  explicit_bzero(bytes.data(), bytes.size());
  if (unlocked) return;
  if (status < -5 || status > 0) fail("sam unlock", status);
  const Explanation why = explainUnlock(status);
  Problem problem;
  problem.exit = Exit::samFailed;
  problem.message = "the SAM is not unlocked: " + why.meaning + " (status " + why.code + ")";
  problem.operation = "sam unlock";
  problem.reader = m_reader;
  problem.hint = why.remedy;
  throw Failure(std::move(problem));
}

}  // namespace mvx2tool
