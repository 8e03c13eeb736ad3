#include "Sam.h"

#include "sam_crypto.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace mvx2sim {

namespace {

const Bytes done = {0x90, 0x00};
const Bytes more_follows = {0x90, 0xAF};
const Bytes wrong_length = {0x67, 0x00};
const Bytes refused = {0x69, 0x82};
const Bytes out_of_order = {0x69, 0x85};
const Bytes no_such_key = {0x6A, 0x88};
const Bytes wrong_parameters = {0x6B, 0x00};
const Bytes wrong_instruction = {0x6D, 0x00};
const Bytes wrong_class = {0x6E, 0x00};

constexpr unsigned unlock_key = 0x0100;
constexpr unsigned char offline_key_number = 0x10;

constexpr std::size_t first_step_size = 2;  // key number and version
constexpr std::size_t number_size = 12;     // of Rnd1 and Rnd2
constexpr std::size_t mac_size = 8;
constexpr std::size_t serial_size = 7;
constexpr std::size_t record_size = 14;
constexpr std::size_t uid_size = 7;

// What both sides of the host authentication compute a MAC over.
Bytes padded(const Bytes& number) { return concat(number, {0x00, 0x00, 0x00, 0x00}); }

// Kxe, from the host's number and the module's.
Bytes deriveKey(const Bytes& key, const Bytes& rnd1, const Bytes& rnd2) {
  Bytes input = concat(slice(rnd1, 7, 5), slice(rnd2, 7, 5));
  for (std::size_t i = 0; i < 5; ++i) input.push_back(static_cast<unsigned char>(rnd1[i] ^ rnd2[i]));
  input.push_back(0x91);
  return encryptCbc(key, input);
}

Bytes diversify(const Bytes& key, const Bytes& input) { return cmac(key, concat({0x01}, input)); }

}  // namespace

struct Sam::Command {
  Handler handler;
  unsigned char ins;
  bool whenLocked;
};

Sam::Sam(const SamSettings& settings)
    : m_keys{{unlock_key, settings.key}},
      m_serial(settings.serial),
      // Vendor, type, subtype, major and minor version, storage size, protocol; twice.
      m_record{0x04, 0x01, 0x01, 0x03, 0x02, 0x18, 0x05, 0x04, 0x01, 0x01, 0x03, 0x04, 0x18, 0x05} {
  for (const unsigned id : {0x0200U, 0x0201U, 0x0300U, 0x1000U, 0x1001U})
    m_keys[id] =
        cmac(Bytes(block_size), {static_cast<unsigned char>(id >> 8U), static_cast<unsigned char>(id)});
}

const Sam::Command* Sam::find(unsigned char ins) {
  static constexpr Command commands[] = {
      {&Sam::version, 0x60, true},           {&Sam::authenticateHost, 0x10, true},
      {&Sam::authenticateCard, 0x0A, false}, {&Sam::activateOfflineKey, 0x01, false},
      {&Sam::decipherOffline, 0x0D, false},  {&Sam::changeKey, 0xC5, false},
      {&Sam::dumpSessionKey, 0xD5, false},   {&Sam::generateMac, 0x7C, false},
  };
  const auto* const command = std::find_if(std::begin(commands), std::end(commands),
                                           [ins](const Command& entry) { return entry.ins == ins; });
  return command == std::end(commands) ? nullptr : command;
}

Bytes Sam::answer(const Bytes& bytes, Occasion& occasion) {
  const auto apdu = parseApdu(bytes);
  if (!apdu) return wrong_length;
  // Whatever comes between the steps of a handshake ends it.
  if (apdu->ins != 0x10) m_host = {};
  if (apdu->ins != 0x0A) m_card = {};
  if (apdu->cla != 0x80) return wrong_class;
  const Command* const command = find(apdu->ins);
  if (command == nullptr) return wrong_instruction;
  if (!m_unlocked && !command->whenLocked) return refused;
  if (apdu->p2 != 0x00) return wrong_parameters;
  return (this->*command->handler)(*apdu, occasion);
}

Bytes Sam::version(const Apdu& apdu, Occasion& occasion) {
  if (apdu.p1 != 0x00) return wrong_parameters;
  if (!apdu.data.empty()) return wrong_length;
  occasion = Occasion::version;
  const Bytes batchAndDate = {0x00, 0x01, 0x02, 0x03, 0x04, 0x02, 0x07, 0x15};
  return concat(concat(m_record, m_serial), concat(batchAndDate, done));
}

Bytes Sam::authenticateHost(const Apdu& apdu, Occasion& occasion) {
  if (apdu.p1 != 0x00) return wrong_parameters;
  const HostAuthentication run = std::exchange(m_host, {});
  // A first step is always taken as one: the host may have given the run before it up.
  if (apdu.data.size() == first_step_size) return startHostAuthentication(apdu.data);
  if (!run.derivedKey.empty()) return finishHostAuthentication(run, apdu.data);
  if (!run.moduleNumber.empty()) return proveToHost(run, apdu.data, occasion);
  return wrong_length;
}

Bytes Sam::startHostAuthentication(const Bytes& data) {
  m_unlocked = false;
  if (data[0] != 0x01 || data[1] != 0x00) return no_such_key;
  m_host.moduleNumber = random(number_size);
  return concat(m_host.moduleNumber, more_follows);
}

Bytes Sam::proveToHost(const HostAuthentication& run, const Bytes& data, Occasion& occasion) {
  if (data.size() != mac_size + number_size) return wrong_length;
  const Bytes& key = m_keys.at(unlock_key);
  const Bytes& rnd2 = run.moduleNumber;
  const Bytes rnd1 = slice(data, mac_size, number_size);
  if (slice(data, 0, mac_size) != truncatedCmac(key, padded(rnd2))) return refused;

  m_host.derivedKey = deriveKey(key, rnd1, rnd2);
  m_host.challenge = random(block_size);
  occasion = Occasion::unlockProof;
  const Bytes proof = truncatedCmac(key, padded(rnd1));
  return concat(concat(proof, encryptCbc(m_host.derivedKey, m_host.challenge)), more_follows);
}

Bytes Sam::finishHostAuthentication(const HostAuthentication& run, const Bytes& data) {
  if (data.size() != 2 * block_size) return wrong_length;
  const Bytes numbers = decryptCbc(run.derivedKey, data);
  if (slice(numbers, block_size, block_size) != rotateLeft(run.challenge, 2)) return refused;
  m_unlocked = true;
  const Bytes hostNumber = slice(numbers, 0, block_size);
  return concat(encryptCbc(run.derivedKey, rotateLeft(hostNumber, 2)), done);
}

Bytes Sam::authenticateCard(const Apdu& apdu, Occasion& /*occasion*/) {
  const CardAuthentication run = std::exchange(m_card, {});
  if (!run.key.empty() && !apdu.hasLe) return finishCardAuthentication(run, apdu.data);
  return apdu.hasLe ? startCardAuthentication(apdu) : out_of_order;
}

Bytes Sam::startCardAuthentication(const Apdu& apdu) {
  const bool isDiversified = apdu.p1 == 0x11;
  if (apdu.p1 != 0x00 && !isDiversified) return wrong_parameters;
  if (apdu.data.size() != 2 + block_size + (isDiversified ? uid_size : 0)) return wrong_length;
  const Bytes* const key = findKey(apdu.data[0], apdu.data[1]);
  if (key == nullptr) return no_such_key;

  m_card.key = isDiversified ? diversify(*key, slice(apdu.data, 2 + block_size, uid_size)) : *key;
  m_card.cardNumber = decryptCbc(m_card.key, slice(apdu.data, 2, block_size));
  m_card.moduleNumber = random(block_size);
  const Bytes numbers = concat(m_card.moduleNumber, rotateLeft(m_card.cardNumber, 1));
  return concat(encryptCbc(m_card.key, numbers), more_follows);
}

Bytes Sam::finishCardAuthentication(const CardAuthentication& run, const Bytes& data) {
  if (data.size() != block_size) return wrong_length;
  if (decryptCbc(run.key, data) != rotateLeft(run.moduleNumber, 1)) return refused;
  const Bytes& a = run.moduleNumber;
  const Bytes& b = run.cardNumber;
  m_sessionKey = concat(concat(slice(a, 0, 4), slice(b, 0, 4)), concat(slice(a, 12, 4), slice(b, 12, 4)));
  return done;
}

Bytes Sam::changeKey(const Apdu& apdu, Occasion& /*occasion*/) {
  if (apdu.p1 != 0x02) return wrong_parameters;
  if (apdu.data.size() != 8) return wrong_length;
  const Bytes* const key = findKey(apdu.data[0], apdu.data[1]);
  if (key == nullptr) return no_such_key;
  return concat(slice(cmac(*key, apdu.data), 0, 6), done);
}

Bytes Sam::activateOfflineKey(const Apdu& apdu, Occasion& /*occasion*/) {
  if (apdu.p1 != 0x01) return wrong_parameters;
  if (apdu.data.size() != 7 && apdu.data.size() != 9) return wrong_length;
  const Bytes* const key = findKey(apdu.data[0], apdu.data[1]);
  if (apdu.data[0] != offline_key_number || key == nullptr) return no_such_key;
  m_offlineKey = diversify(*key, slice(apdu.data, 2, apdu.data.size()));
  return done;
}

Bytes Sam::decipherOffline(const Apdu& apdu, Occasion& /*occasion*/) {
  if (apdu.p1 != 0x00) return wrong_parameters;
  if (apdu.data.size() != block_size) return wrong_length;
  if (m_offlineKey.empty()) return out_of_order;
  return concat(decryptCbc(m_offlineKey, apdu.data), done);
}

Bytes Sam::dumpSessionKey(const Apdu& apdu, Occasion& /*occasion*/) {
  if (apdu.p1 != 0x00) return wrong_parameters;
  if (!apdu.data.empty()) return wrong_length;
  if (m_sessionKey.empty()) return out_of_order;
  return concat(m_sessionKey, done);
}

Bytes Sam::generateMac(const Apdu& apdu, Occasion& /*occasion*/) {
  if (apdu.p1 != 0x00) return wrong_parameters;
  if (m_sessionKey.empty()) return out_of_order;
  return concat(truncatedCmac(m_sessionKey, apdu.data), done);
}

void Sam::powerOff() {
  m_unlocked = false;
  m_host = {};
  m_card = {};
  m_sessionKey.clear();
  m_offlineKey.clear();
}

const Bytes* Sam::findKey(unsigned char number, unsigned char keyVersion) const {
  const auto key = m_keys.find(number * 0x100U + keyVersion);
  return key == m_keys.end() ? nullptr : &key->second;
}

Bytes Sam::random(std::size_t size) {
  Bytes bytes(size);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(m_random() & 0xFFU);
  return bytes;
}

namespace {

// The number and version in a name like "key0201".
std::optional<unsigned> keyId(const std::string& name) {
  if (name == "key") return unlock_key;
  if (name.size() != 7 || name.rfind("key", 0) != 0) return std::nullopt;
  const auto id = parseHex(name.substr(3));
  return id ? std::make_optional((*id)[0] * 0x100U + (*id)[1]) : std::nullopt;
}

}  // namespace

std::optional<std::string> Sam::get(const std::string& name) const {
  if (name == "serial") return printHex(m_serial);
  if (name == "version") return printHex(m_record);
  if (name == "unlocked") return m_unlocked ? "1" : "0";
  const auto key = m_keys.find(keyId(name).value_or(0));
  return key == m_keys.end() ? std::nullopt : std::make_optional(printHex(key->second));
}

bool Sam::set(const std::string& name, const std::string& value) {
  const Bytes bytes = parseHex(value).value_or(Bytes{});
  if (const auto id = keyId(name); id && bytes.size() == block_size) {
    m_keys[*id] = bytes;
  } else if (name == "serial" && bytes.size() == serial_size) {
    m_serial = bytes;
  } else if (name == "version" && bytes.size() == record_size) {
    m_record = bytes;
  } else {
    return false;
  }
  return true;
}

}  // namespace mvx2sim
