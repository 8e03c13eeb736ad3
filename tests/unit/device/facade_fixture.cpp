#include "unit/device/facade_fixture.h"

#include <stdexcept>

namespace mvx2test {

using velmorin::MVX2Interfaces;

namespace {

class BrokenChannel : public Channel {
 public:
  std::string mvx2NoFormattedTransaction(const std::string& /*request*/) override {
    throw std::runtime_error("no luck");
  }
  std::string mvx2APDUTransaction(const char* /*data*/, int /*length*/) override {
    throw std::runtime_error("no luck");
  }
};

Channel*& channelOf(MVX2Interfaces& facade);

// An explicit instantiation may name a private member: the one way in that leaves the header alone.
template <Channel* MVX2Interfaces::*Member>
struct Access {
  friend Channel*& channelOf(MVX2Interfaces& facade) { return facade.*Member; }
};
template struct Access<&MVX2Interfaces::m_channel>;

}  // namespace

void ConnectedFacade::SetUp() {
  pcsc.reset();
  facade = MVX2Interfaces::getInstance(0);
  pcsc.readers = {"KRV Terminal 00 00"};
  connect();
}

void ConnectedFacade::TearDown() { facade->releaseInstance(); }

void ConnectedFacade::connect() {
  ASSERT_TRUE(facade->connect(1, velmorin::CONNECT_DEFAULT));
  pcsc.apdus.clear();
  pcsc.calls.clear();
}

void ConnectedFacade::breakChannel() {
  Channel*& channel = channelOf(*facade);
  delete channel;
  channel = new BrokenChannel;
  pcsc.calls.clear();
}

bool ConnectedFacade::hasNewChannel() const {
  return facade->channelIsReady() == 1 && dynamic_cast<BrokenChannel*>(channelOf(*facade)) == nullptr;
}

}  // namespace mvx2test
