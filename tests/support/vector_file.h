// Reads the published test vectors of tests/vectors: records of a title in brackets and named hexadecimal
// values.
#ifndef MVX2_TESTS_SUPPORT_VECTOR_FILE_H
#define MVX2_TESTS_SUPPORT_VECTOR_FILE_H

#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace mvx2::test {

using Bytes = std::vector<unsigned char>;

// The bytes of hexadecimal digits; blanks between bytes are free.
inline Bytes fromHex(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (c != ' ') digits += c;
  }
  Bytes bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

struct Vector {
  std::string title;
  std::map<std::string, Bytes> values;

  const Bytes& operator[](const std::string& name) const { return values.at(name); }
};

inline std::vector<Vector> readVectors(const std::string& fileName) {
  std::ifstream file(std::string(MVX2_VECTORS_DIR "/") + fileName);
  if (!file) throw std::runtime_error("no vectors in " + fileName);
  std::vector<Vector> vectors;
  std::string line;
  std::string name;
  while (std::getline(file, line)) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '[') {
      vectors.push_back({line.substr(1, line.find(']') - 1), {}});
      continue;
    }
    std::string digits = line;
    if (line[0] != ' ') {
      const std::size_t equals = line.find(" =");
      name = line.substr(0, equals);
      digits = line.substr(equals + 2);
    }
    Bytes& value = vectors.back().values[name];
    for (const unsigned char byte : fromHex(digits)) value.push_back(byte);
  }
  return vectors;
}

// The records whose titles start so. There must be some: a test that runs none of them would say nothing.
inline std::vector<Vector> readVectors(const std::string& fileName, const std::string& titleStart) {
  std::vector<Vector> chosen;
  for (Vector& vector : readVectors(fileName)) {
    if (vector.title.compare(0, titleStart.size(), titleStart) == 0) chosen.push_back(std::move(vector));
  }
  if (chosen.empty()) throw std::runtime_error("no " + titleStart + " in " + fileName);
  return chosen;
}

}  // namespace mvx2::test

#endif
