// Starts the tests beside a simulator of their own: unless this program already runs in one, it runs itself
// again through mvx2-sim. Each test is started alone by ctest, so each has its own daemon and fresh readers.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

// A pause between two attempts costs no second here: the simulator is there or it is not.
extern "C" unsigned int sleep(unsigned int /*seconds*/) {
  usleep(10000);
  return 0;
}

namespace {

[[noreturn]] void runBesideSimulator(const std::vector<std::string>& arguments) {
  std::vector<std::string> words;
  std::istringstream launcher(MVX2_LAUNCHER);
  for (std::string word; std::getline(launcher, word, '|');) words.push_back(word);
  words.insert(words.end(), arguments.begin(), arguments.end());

  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execv(argv[0], argv.data());
  std::cerr << argv[0] << ": " << std::strerror(errno) << '\n';
  std::exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  testing::InitGoogleTest(&argc, argv);
  if (!testing::GTEST_FLAG(list_tests) && std::getenv("MVX2_SIM") == nullptr) runBesideSimulator(arguments);
  return RUN_ALL_TESTS();
}
