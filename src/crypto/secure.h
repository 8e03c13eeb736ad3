// What every holder of secrets needs: memory that really is cleared, and a comparison that tells nothing.
#ifndef MVX2_CRYPTO_SECURE_H
#define MVX2_CRYPTO_SECURE_H

#include <cstddef>
#include <cstring>

namespace mvx2 {

// Clears memory that held a secret, also where the optimiser sees that the object dies next.
inline void wipe(void* memory, std::size_t length) { explicit_bzero(memory, length); }

// Clears a local object that holds a secret when its scope ends, on every way out.
template <class T>
class Wiper {
 public:
  explicit Wiper(T& object) : m_object(object) {}
  Wiper(const Wiper&) = delete;
  Wiper(Wiper&&) = delete;
  Wiper& operator=(const Wiper&) = delete;
  Wiper& operator=(Wiper&&) = delete;
  ~Wiper() { wipe(&m_object, sizeof m_object); }

 private:
  T& m_object;
};

// Clears the stack below the caller: calls that are over leave there what the compiler spilled in them, out
// of the reach of a Wiper.
[[gnu::noinline]] inline void wipeStackBelow() {
  unsigned char below[2048];
  wipe(below, sizeof below);
}

// Does so when its scope ends. Declare it first: then it outlives the Wipers.
class StackWiper {
 public:
  StackWiper() = default;
  StackWiper(const StackWiper&) = delete;
  StackWiper(StackWiper&&) = delete;
  StackWiper& operator=(const StackWiper&) = delete;
  StackWiper& operator=(StackWiper&&) = delete;
  ~StackWiper() { wipeStackBelow(); }
};

// Whether two byte arrays are equal, in a time that depends on their length alone.
inline bool equalConstantTime(const unsigned char* a, const unsigned char* b, std::size_t length) {
  unsigned char difference = 0;
  for (std::size_t i = 0; i < length; ++i) {
    difference = static_cast<unsigned char>(difference | (a[i] ^ b[i]));
    // Hides the value from the optimiser: it must not leave the loop early once all bits are set.
    asm volatile("" : "+r"(difference));
  }
  return difference == 0;
}

}  // namespace mvx2

#endif
