// What our names cost on top of the DES functions of mbed TLS that they call.
#include <mbedtls/des.h>
#include <mvx2/des.h>

#include <vector>

#include "paired.h"

namespace {

using mvx2::bench::paired;

constexpr unsigned char key[24] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef, 0x23, 0x45, 0x67, 0x89,
                                   0xab, 0xcd, 0xef, 0x01, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef, 0x01, 0x23};

// The argument of the benchmarks: the length of the buffer.
std::vector<unsigned char> bufferOf(const benchmark::State& state) {
  return std::vector<unsigned char>(static_cast<std::size_t>(state.range(0)));
}

void desCbc(benchmark::State& state) {
  std::vector<unsigned char> ourBuffer = bufferOf(state);
  std::vector<unsigned char> theirBuffer = bufferOf(state);
  unsigned char ourIv[8] = {};
  unsigned char theirIv[8] = {};
  des_context ours;
  des_setkey_enc(&ours, key);
  mbedtls_des_context theirs;
  mbedtls_des_setkey_enc(&theirs, key);
  paired(
      state,
      [&] { des_crypt_cbc(&ours, DES_ENCRYPT, ourBuffer.size(), ourIv, ourBuffer.data(), ourBuffer.data()); },
      [&] {
        mbedtls_des_crypt_cbc(&theirs, MBEDTLS_DES_ENCRYPT, theirBuffer.size(), theirIv, theirBuffer.data(),
                              theirBuffer.data());
      });
}
BENCHMARK(desCbc)->Arg(8)->Arg(64)->Arg(1024);

void tdeaCbc(benchmark::State& state) {
  std::vector<unsigned char> ourBuffer = bufferOf(state);
  std::vector<unsigned char> theirBuffer = bufferOf(state);
  unsigned char ourIv[8] = {};
  unsigned char theirIv[8] = {};
  des3_context ours;
  des3_set3key_enc(&ours, key);
  mbedtls_des3_context theirs;
  mbedtls_des3_set3key_enc(&theirs, key);
  paired(
      state,
      [&] {
        des3_crypt_cbc(&ours, DES_ENCRYPT, ourBuffer.size(), ourIv, ourBuffer.data(), ourBuffer.data());
      },
      [&] {
        mbedtls_des3_crypt_cbc(&theirs, MBEDTLS_DES_ENCRYPT, theirBuffer.size(), theirIv, theirBuffer.data(),
                               theirBuffer.data());
      });
}
BENCHMARK(tdeaCbc)->Arg(8)->Arg(64)->Arg(1024);

}  // namespace

BENCHMARK_MAIN();
