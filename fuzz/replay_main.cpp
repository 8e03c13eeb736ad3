// Runs a fuzz target over the files of its corpus, without libFuzzer: replay_NAME FILE_OR_FOLDER...
#include "fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(place)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

void run(const fs::path& path) {
  std::ifstream file(path, std::ios_base::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  const std::vector<char> content((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  // No room behind the last byte, as libFuzzer hands it over: a sanitizer then sees the first one too many.
  std::vector<std::uint8_t> input(content.begin(), content.end());
  input.shrink_to_fit();
  std::cout << path.filename().string() << std::endl;
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int count, char** arguments) {
  int runs = 0;
  try {
    for (int i = 1; i < count; ++i)
      for (const fs::path& path : filesIn(arguments[i])) {
        run(path);
        ++runs;
      }
  } catch (const std::exception& e) {
    std::cerr << e.what() << std::endl;
    return 1;
  }
  if (runs == 0) std::cerr << "no corpus" << std::endl;
  return runs == 0 ? 1 : 0;
}
