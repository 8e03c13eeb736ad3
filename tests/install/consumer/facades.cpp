#include <mvx2/MVX2Interfaces.h>
#include <mvx2/SAMChannel.h>
#include <mvx2/SAMInterfaces.h>
#include <mvx2/USBChannel.h>

int main() {
  velmorin::MVX2Interfaces* const device = velmorin::MVX2Interfaces::getInstance(0);
  const bool isQuiet = device->getCredit() == -1 && !SAMInterfaces::getInstance()->channelIsReady();
  device->releaseInstance();
  SAMInterfaces::releaseInstance();
  return isQuiet ? 0 : 1;
}
