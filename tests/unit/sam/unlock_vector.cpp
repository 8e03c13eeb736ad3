#include "unlock_vector.h"

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace mvx2test {
namespace {

std::map<std::string, Bytes> readFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::map<std::string, Bytes> values;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string name;
    std::string equals;
    std::string digits;
    if (words >> name >> equals >> digits && name[0] != '#' && equals == "=") values[name] = unhex(digits);
  }
  return values;
}

UnlockVector read() {
  const std::map<std::string, Bytes> v = readFile(MVX2_VECTORS "/sam_unlock.txt");
  return {v.at("key"),          v.at("rnd1"),
          v.at("rnd2"),         v.at("rndA"),
          v.at("rndB"),         v.at("host_cmac"),
          v.at("host_mac"),     v.at("sam_cmac"),
          v.at("sam_mac"),      v.at("derivation_input"),
          v.at("kxe"),          v.at("rndB_enciphered"),
          v.at("rndB_rotated"), v.at("cryptogram")};
}

}  // namespace

Bytes unhex(const std::string& text) {
  std::string digits;
  for (const char c : text)
    if (c != ' ') digits += c;
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  return bytes;
}

Bytes joined(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const UnlockVector& UnlockVector::instance() {
  static const UnlockVector vector = read();
  return vector;
}

}  // namespace mvx2test
