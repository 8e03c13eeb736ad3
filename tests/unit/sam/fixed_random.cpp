#include "fixed_random.h"

#include <dlfcn.h>
#include <stdio_ext.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>

namespace mvx2test {

FixedRandom& FixedRandom::instance() {
  static FixedRandom random;
  return random;
}

void FixedRandom::reset() { *this = FixedRandom(); }

namespace {

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::set<std::FILE*>& openStreams() {
  static std::set<std::FILE*> streams;
  return streams;
}

std::FILE* openUrandom(const char* mode) {
  FixedRandom& random = FixedRandom::instance();
  ++random.openings;
  random.mode = mode;
  std::FILE* stream = nullptr;
  if (random.script.empty()) {
    stream = next<std::FILE*(const char*, const char*)>("fopen")("/dev/urandom", mode);
  } else if (random.script.front()) {
    random.given.push_back(*random.script.front());
    stream = fmemopen(random.given.back().data(), random.given.back().size(), mode);
  }
  if (!random.script.empty()) random.script.pop_front();
  if (stream == nullptr) return nullptr;
  ++random.open;
  openStreams().insert(stream);
  return stream;
}

}  // namespace
}  // namespace mvx2test

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
  if (std::strcmp(path, "/dev/urandom") == 0) return mvx2test::openUrandom(mode);
  return mvx2test::next<std::FILE*(const char*, const char*)>("fopen")(path, mode);
}

int fclose(std::FILE* stream) {
  if (mvx2test::openStreams().erase(stream) != 0) {
    mvx2test::FixedRandom& random = mvx2test::FixedRandom::instance();
    --random.open;
    random.largestBuffer = std::max(random.largestBuffer, __fbufsize(stream));
  }
  return mvx2test::next<int(std::FILE*)>("fclose")(stream);
}

}  // extern "C"
