// What the facade's own operations do when an exchange or a reconnection throws.
#include "support/log_capture.h"
#include "unit/device/facade_fixture.h"

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

namespace {

using mvx2test::LogCapture;

class FailingFacade : public mvx2test::ConnectedFacade {};

TEST_F(FailingFacade, IsDisconnectedByAFailedProbeAndNotReconnected) {
  breakChannel();
  const LogCapture log;
  EXPECT_FALSE(facade->isConnected());
  EXPECT_EQ(facade->channelIsReady(), 0);
  EXPECT_TRUE(pcsc.calls.empty());
  EXPECT_EQ(log.lines().at(0), "isBootloader : no luck");
  EXPECT_EQ(log.lines().at(1).rfind("MVX2Interfaces disconnexion at ", 0), 0U);
}

TEST_F(FailingFacade, KeepsItsChannelWhenAFailedProbeIsReportedAsAnException) {
  breakChannel();
  facade->enableExternalException(true);
  const LogCapture log;
  try {
    facade->isConnected();
    ADD_FAILURE() << "no exception";
  } catch (const std::exception& e) {
    EXPECT_EQ(typeid(e), typeid(std::exception));
  }
  EXPECT_EQ(facade->channelIsReady(), 1);
  EXPECT_EQ(log.text(), "isBootloader : no luck\n");
}

TEST_F(FailingFacade, PassesOnAnExceptionOfTheReconnection) {
  breakChannel();
  pcsc.fail("SCardEstablishContext", SCARD_E_NO_SERVICE);
  pcsc.onCall = [](const std::string& function) {
    if (function == "sleep") throw std::runtime_error("woken");
  };
  EXPECT_THROW(facade->getCredit(), std::runtime_error);
}

}  // namespace
