// The cutting of replies against the same rules written another way.
#include <mvx2/Channel.h>

#include "fuzz.h"

#include <string>

namespace {

using mvx2fuzz::check;

class NoTransport : public Channel {
 public:
  std::string mvx2NoFormattedTransaction(const std::string& /*request*/) override { return {}; }
  std::string mvx2APDUTransaction(const char* /*data*/, int /*length*/) override { return {}; }
};

// The first byte belongs to the echo, whatever it is.
std::string withoutEcho(const std::string& raw) {
  if (raw.empty()) return {};
  const std::size_t feed = raw.substr(1).find('\n');
  return feed == std::string::npos ? std::string() : raw.substr(feed + 2);
}

std::string expectedAnswer(const std::string& raw) {
  const std::string rest = withoutEcho(raw);
  const std::string body = rest.substr(0, rest.find_first_of("#>$"));
  std::string answer;
  bool feedIsGone = false;
  for (auto c = body.rbegin(); c != body.rend(); ++c) {
    const bool isLastFeed = *c == '\n' && !feedIsGone;
    feedIsGone = feedIsGone || isLastFeed;
    if (*c != '\r' && !isLastFeed) answer.insert(answer.begin(), *c);
  }
  return answer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NoTransport channel;
  const std::string raw(data, data + size);
  check(channel.formatResponse(data, static_cast<unsigned int>(size)) == expectedAnswer(raw), "an answer");
  return 0;
}
