// A model of a secure access module, made for tests.
//
// It is not a module: it performs the module's side of the host authentication, and answers the card and key
// commands in the shape and with the status words that a host sees. What the answers to the card and key
// commands mean to a card, the model does not claim to know: it computes them in ways of its own, stated
// below. Its random numbers can be foretold.
//
// Plain state machine: bytes in, bytes out. No input or output, no thread, no clock.
#ifndef MVX2SIM_MODEL_SAM_H
#define MVX2SIM_MODEL_SAM_H

#include "Apdu.h"
#include "Faults.h"
#include "bytes.h"

#include <map>
#include <optional>
#include <random>
#include <string>

namespace mvx2sim {

// What a new SAM holds.
struct SamSettings {
  Bytes key;     // the unlock key, 16 bytes
  Bytes serial;  // 7 bytes
};

class Sam {
 public:
  explicit Sam(const SamSettings& settings);

  // One APDU. Status words: 90 00 done; 90 AF the module waits for the next step; 67 00 wrong length; 69 82
  // locked, or a proof was wrong; 69 85 the step or the key that must come first did not; 6A 88 no such key;
  // 6B 00 wrong P1 or P2; 6D 00 no such command; 6E 00 wrong class.
  //
  //   60       version record: hardware (7 bytes), software (7), serial number (7), batch and date (8)
  //   10       host authentication, three steps; everything below is refused until it has succeeded
  //   0A       card authentication: first step with a key number, a key version and the card's 16-byte
  //   challenge
  //            E(K, B) (P1 11: and the card's 7-byte number U, K then is CMAC(K, 01 U)), answered with
  //            E(K, A, B rotated left by a byte); second step with the card's E(K, A rotated left by a byte).
  //            Session key: A[0..3] B[0..3] A[12..15] B[12..15].
  //   01       the key 10 of a version becomes the offline key CMAC(K, 01 and the rest of the data)
  //   0D       16 bytes deciphered with the offline key
  //   C5       the first six bytes of CMAC(K, data) under the key of the number and version that lead the
  //   data D5       the session key 7C       truncated CMAC of the data under the session key
  //
  // E is AES-128 in CBC mode from an initial vector of zeros.
  Bytes answer(const Bytes& bytes, Occasion& occasion);

  // Unlocking, authentication, session and offline key are lost without power.
  void powerOff();

  // Behind the module's back: "key" (the unlock key), "serial", "version" (hardware and software record, 14
  // bytes), "keyNNVV" (the key of number NN and version VV, hexadecimal; writing makes one) and, only to be
  // read, "unlocked" (1 or 0).
  std::optional<std::string> get(const std::string& name) const;
  bool set(const std::string& name, const std::string& value);

 private:
  using Handler = Bytes (Sam::*)(const Apdu&, Occasion&);
  struct Command;

  // A handshake that waits for its next step; empty numbers when none does.
  struct HostAuthentication {
    Bytes moduleNumber;  // Rnd2, after step 1
    Bytes derivedKey;    // Kxe, after step 2
    Bytes challenge;     // RndB, after step 2
  };
  struct CardAuthentication {
    Bytes key;
    Bytes moduleNumber;  // A
    Bytes cardNumber;    // B
  };

  static const Command* find(unsigned char ins);
  Bytes version(const Apdu& apdu, Occasion& occasion);
  Bytes authenticateHost(const Apdu& apdu, Occasion& occasion);
  Bytes startHostAuthentication(const Bytes& data);
  Bytes proveToHost(const HostAuthentication& run, const Bytes& data, Occasion& occasion);
  Bytes finishHostAuthentication(const HostAuthentication& run, const Bytes& data);
  Bytes authenticateCard(const Apdu& apdu, Occasion& occasion);
  Bytes startCardAuthentication(const Apdu& apdu);
  Bytes finishCardAuthentication(const CardAuthentication& run, const Bytes& data);
  Bytes changeKey(const Apdu& apdu, Occasion& occasion);
  Bytes decipherOffline(const Apdu& apdu, Occasion& occasion);
  Bytes activateOfflineKey(const Apdu& apdu, Occasion& occasion);
  Bytes dumpSessionKey(const Apdu& apdu, Occasion& occasion);
  Bytes generateMac(const Apdu& apdu, Occasion& occasion);

  const Bytes* findKey(unsigned char number, unsigned char keyVersion) const;
  Bytes random(std::size_t size);

  std::map<unsigned, Bytes> m_keys;  // by number and version: 0xNNVV
  Bytes m_serial;
  Bytes m_record;
  std::mt19937 m_random;

  bool m_unlocked = false;
  HostAuthentication m_host;
  CardAuthentication m_card;
  Bytes m_sessionKey;
  Bytes m_offlineKey;
};

}  // namespace mvx2sim

#endif
