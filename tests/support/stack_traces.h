// What a call leaves behind on its stack.
#ifndef MVX2_TESTS_SUPPORT_STACK_TRACES_H
#define MVX2_TESTS_SUPPORT_STACK_TRACES_H

#include <functional>
#include <vector>

namespace mvx2test {

// The stack that this work ran on, as it was left: one of its own, so that nothing later covers the traces.
std::vector<unsigned char> stackAfter(const std::function<void()>& work);

bool holds(const std::vector<unsigned char>& memory, const std::vector<unsigned char>& secret);

}  // namespace mvx2test

#endif
