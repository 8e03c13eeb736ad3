#include "readers.h"

#include "Failure.h"
#include "places.h"

#include <unistd.h>
#include <winscard.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

namespace mvx2sim {

namespace {

namespace fs = std::filesystem;

constexpr auto poll_interval = std::chrono::milliseconds(10);
constexpr int max_polls = 2000;

class Context {
 public:
  Context() : m_status(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context)) {}
  Context(const Context&) = delete;
  Context(Context&&) = delete;
  Context& operator=(const Context&) = delete;
  Context& operator=(Context&&) = delete;
  ~Context() {
    if (isEstablished()) SCardReleaseContext(m_context);
  }

  bool isEstablished() const { return m_status == SCARD_S_SUCCESS; }

  // What is known of a reader, SCARD_STATE_UNKNOWN when it is not listed.
  DWORD state(const std::string& name) const {
    SCARD_READERSTATE reader{};
    reader.szReader = name.c_str();
    const LONG status = SCardGetStatusChange(m_context, 0, &reader, 1);
    return status == SCARD_S_SUCCESS ? reader.dwEventState : SCARD_STATE_UNKNOWN;
  }

 private:
  SCARDCONTEXT m_context = 0;
  LONG m_status;
};

bool isReady(DWORD state) {
  if ((state & SCARD_STATE_UNKNOWN) != 0 || (state & SCARD_STATE_UNAVAILABLE) != 0) return false;
  return (state & (SCARD_STATE_PRESENT | SCARD_STATE_EMPTY)) != 0;
}

void await(const std::string& what, const std::function<bool(const Context&)>& isSo) {
  for (int polls = 0; polls < max_polls; ++polls) {
    const Context context;
    // Without a daemon there is nobody to follow.
    if (!context.isEstablished() || isSo(context)) return;
    std::this_thread::sleep_for(poll_interval);
  }
  throw Failure("the daemon does not notice that " + what);
}

}  // namespace

std::vector<std::string> devices() {
  std::vector<std::string> names;
  for (const auto& file : fs::directory_iterator(places::names)) names.push_back(file.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::string readerName(const std::string& device) {
  std::ifstream file(fs::path(places::names) / device);
  std::string name;
  std::getline(file, name);
  if (!file) throw Failure("this simulation has no " + device);
  return name + " 00 00";
}

bool isPlugged(const std::string& device) { return fs::exists(fs::path(places::plugged) / device); }

bool allPluggedReadersReady() {
  const Context context;
  if (!context.isEstablished()) return false;
  const std::vector<std::string> all = devices();
  return std::all_of(all.begin(), all.end(), [&context](const std::string& device) {
    return !isPlugged(device) || isReady(context.state(readerName(device)));
  });
}

void plug(const std::string& device, bool in) {
  const std::string name = readerName(device);
  const fs::path file = fs::path(places::plugged) / device;
  if (in) {
    std::ofstream{file};
  } else {
    fs::remove(file);
  }
  await("the reader is " + std::string(in ? "in" : "out"), [&name, in](const Context& context) {
    const DWORD state = context.state(name);
    return in ? isReady(state) : (state & SCARD_STATE_UNKNOWN) != 0;
  });
}

void awaitCard(const std::string& device, bool in) {
  const std::string name = readerName(device);
  const DWORD wanted = in ? SCARD_STATE_PRESENT : SCARD_STATE_EMPTY;
  await("the card is " + std::string(in ? "in" : "out"),
        [&name, wanted](const Context& context) { return (context.state(name) & wanted) != 0; });
}

}  // namespace mvx2sim
