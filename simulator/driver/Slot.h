// One reader of the driver: the model behind a lock, with its control socket.
#ifndef MVX2SIM_DRIVER_SLOT_H
#define MVX2SIM_DRIVER_SLOT_H

#include "ControlSocket.h"

#include "../model/Reader.h"

#include <mutex>
#include <string>

namespace mvx2sim {

class Slot {
 public:
  Slot(std::unique_ptr<Reader> reader, const std::string& controlPath);

  bool cardPresent();
  Bytes powerUp();
  void powerOff();
  // Sleeps outside the lock when a fault delays the exchange, so that the fault can be cleared meanwhile.
  Exchange transmit(const Bytes& apdu);
  std::string control(const std::string& line);

  // What the daemon's thread for this reader does between two looks at the slot. Ends early when a line of
  // control came, since the card may have moved.
  void wait(int milliseconds) const { m_socket.wait(milliseconds); }
  void wake() const { m_socket.wake(); }

 private:
  std::mutex m_mutex;
  std::unique_ptr<Reader> m_reader;
  ControlSocket m_socket;  // last: its thread uses the others
};

// The slot behind a reader number of the daemon, which lives until the daemon ends: a reader that is pulled
// out and put back in still holds its values. Null when there is none.
Slot* findSlot(unsigned long lun);

// The slot of a device, made when the number has none yet. The last component of the device's name says what
// it is, "terminal" or "sam"; null for any other. The environment configures it:
//
//   MVX2_SIM_DIR         directory of the control sockets, named after the device ("sam.control")
//   MVX2_SIM_SAM_KEY     the SAM's unlock key, 32 hexadecimal digits
//   MVX2_SIM_SAM_SERIAL  the SAM's serial number, 14 hexadecimal digits
Slot* openSlot(unsigned long lun, const std::string& deviceName);

}  // namespace mvx2sim

#endif
