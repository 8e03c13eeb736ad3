// The mutual authentication of host and module, in three steps.
#include <mvx2/SAMChannel.h>
#include <mvx2/aes_cmac.h>

#include "crypto/secure.h"
#include "sam/aes128.h"
#include "sam/exchange.h"

#include <algorithm>
#include <cstdio>

using mvx2::exchange;
using mvx2::Le;
using mvx2::SamReply;
using mvx2::Wiper;

namespace {

constexpr unsigned char ins_authenticate_host = 0x10;

constexpr long unexpected_status_word = -1;  // in the first two steps
constexpr long wrong_length_or_mac = -2;
constexpr long reply_too_short = -3;
constexpr long not_unlocked = -3;
constexpr long no_random_numbers = -5;

bool fail(long& status, long with) {
  status = with;
  return false;
}

// Fills an array from the system's random numbers. Fewer than asked for are none.
bool readRandom(unsigned char* out, std::size_t length) {
  std::FILE* const file = std::fopen("/dev/urandom", "rb");
  if (file == nullptr) return false;
  // A buffer of the stream's would keep a copy of the secret on the heap.
  static_cast<void>(std::setvbuf(file, nullptr, _IONBF, 0));
  const std::size_t got = std::fread(out, 1, length, file);
  static_cast<void>(std::fclose(file));
  return got == length;
}

// The truncated CMAC of a 12-byte random number, filled up with zeros.
void macOfRandom(SAMChannel& channel, unsigned char* key, unsigned char* k1, unsigned char* k2,
                 const unsigned char* random, unsigned char* mac) {
  unsigned char message[16] = {};
  unsigned char cmac[16];
  const Wiper wipeCmac(cmac);
  std::copy_n(random, 12, message);
  channel.calculateCMAC(message, key, k1, k2, cmac, mac);
}

}  // namespace

bool SAMChannel::unlock(unsigned char* key, long& status, unsigned long /*keyLength*/) {
  if (!isConnected()) return false;
  unsigned char rnd1[12];
  unsigned char rnd2[12];
  unsigned char step2Reply[24];
  return unlock_part1(rnd2, status) && unlock_part2(key, rnd2, rnd1, step2Reply, status) &&
         unlock_part3(key, step2Reply, rnd2, rnd1, status);
}

bool SAMChannel::unlock_part1(unsigned char* rnd2Out, long& status) {
  unsigned char keyEntry[] = {0x01, 0x00};  // number and version
  SamReply reply;
  const long exchanged =
      exchange(*this, ins_authenticate_host, 0x00, keyEntry, sizeof keyEntry, Le::zero, reply);
  if (exchanged != SCARD_S_SUCCESS) return fail(status, exchanged);
  if (reply.length < 3) return fail(status, reply_too_short);
  if (reply.length != 14) return fail(status, wrong_length_or_mac);
  if (!reply.endsWith(0x90, 0xAF)) return fail(status, unexpected_status_word);
  std::copy_n(reply.bytes, 12, rnd2Out);
  return true;
}

bool SAMChannel::unlock_part2(unsigned char* key, unsigned char* rnd2, unsigned char* rnd1Out,
                              unsigned char* replyOut, long& status) {
  const mvx2::StackWiper wipeStack;
  unsigned char k1[16];
  unsigned char k2[16];
  unsigned char hostProof[20];  // the host's MAC, Rnd1
  unsigned char expectedMac[8];
  const Wiper wipeK1(k1);
  const Wiper wipeK2(k2);
  const Wiper wipeHostProof(hostProof);
  const Wiper wipeExpectedMac(expectedMac);

  aes_GenerateSubKey(key, k1, k2);
  macOfRandom(*this, key, k1, k2, rnd2, hostProof);
  unsigned char* const rnd1 = hostProof + 8;
  if (!readRandom(rnd1, 12)) return fail(status, no_random_numbers);
  std::copy_n(rnd1, 12, rnd1Out);
  macOfRandom(*this, key, k1, k2, rnd1, expectedMac);

  SamReply reply;
  status = exchange(*this, ins_authenticate_host, 0x00, hostProof, sizeof hostProof, Le::zero, reply);
  if (status != SCARD_S_SUCCESS) return false;
  if (reply.length < 3) return fail(status, reply_too_short);
  if (!reply.endsWith(0x90, 0xAF)) return fail(status, unexpected_status_word);
  std::copy_n(reply.bytes, 24, replyOut);
  return mvx2::equalConstantTime(reply.bytes, expectedMac, sizeof expectedMac) ||
         fail(status, wrong_length_or_mac);
}

void SAMChannel::derivatedSamAESKey(unsigned char* key, unsigned char* rnd1, unsigned char* rnd2,
                                    unsigned char* kxeOut, unsigned char* iv) {
  std::fill_n(iv, 16, static_cast<unsigned char>(0));
  unsigned char input[16];
  std::copy_n(rnd1 + 7, 5, input);
  std::copy_n(rnd2 + 7, 5, input + 5);
  for (int i = 0; i < 5; ++i) input[10 + i] = static_cast<unsigned char>(rnd1[i] ^ rnd2[i]);
  input[15] = 0x91;
  unsigned char chain[16] = {};
  const Wiper wipeChain(chain);
  mvx2::Aes128(key).encipher(input, kxeOut, chain);
}

bool SAMChannel::unlock_part3(unsigned char* key, unsigned char* step2Reply, unsigned char* rnd2,
                              unsigned char* rnd1, long& status) {
  unsigned char kxe[16];
  unsigned char iv[16];
  unsigned char rndB[16];
  unsigned char plain[32];  // RndA, RndB rotated
  const Wiper wipeKxe(kxe);
  const Wiper wipeIv(iv);
  const Wiper wipeRndB(rndB);
  const Wiper wipePlain(plain);

  derivatedSamAESKey(key, rnd1, rnd2, kxe, iv);
  const mvx2::Aes128 aes(kxe);
  aes.decipher(step2Reply + 8, rndB, iv);
  std::rotate_copy(rndB, rndB + 2, rndB + 16, plain + 16);
  if (!readRandom(plain, 16)) return false;

  unsigned char cryptogram[32];
  std::fill_n(iv, 16, static_cast<unsigned char>(0));
  aes.encipher(plain, cryptogram, iv);
  aes.encipher(plain + 16, cryptogram + 16, iv);

  SamReply reply;
  status = exchange(*this, ins_authenticate_host, 0x00, cryptogram, sizeof cryptogram, Le::zero, reply);
  if (status != SCARD_S_SUCCESS || reply.length < 3) return false;
  return reply.endsWith(0x90, 0x00) || fail(status, not_unlocked);
}
