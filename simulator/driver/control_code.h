/* The control code with which a program scripts a simulated reader through SCardControl: request and reply
 * are one line of ASCII each, without an end of line, for example "set credit 500" and "OK". */
#ifndef MVX2SIM_DRIVER_CONTROL_CODE_H
#define MVX2SIM_DRIVER_CONTROL_CODE_H

#include <reader.h>

#define MVX2SIM_CONTROL_CODE SCARD_CTL_CODE(3850)

#endif
