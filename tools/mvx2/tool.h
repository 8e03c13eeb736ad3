// What every command gets.
#ifndef MVX2TOOL_TOOL_H
#define MVX2TOOL_TOOL_H

#include "output.h"
#include "readers.h"

namespace mvx2tool {

struct Tool {
  Output output = {};
  Select reader = Select::any;
  int attempts = 1;
};

}  // namespace mvx2tool

#endif
