#include <mvx2/NullStream.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

TEST(NullStream, IsAFileStreamBuffer) { EXPECT_TRUE((std::is_base_of_v<std::filebuf, NullStream>)); }

TEST(NullStream, IsOpenFromTheLoadOfTheLibrary) { EXPECT_TRUE(null_stream.is_open()); }

TEST(NullStream, SwallowsWhatIsWritten) {
  std::ostream log(&null_stream);
  log << "line" << std::endl;
  EXPECT_TRUE(log.good());
}

TEST(NullStream, IsOpenForOutputOnly) { EXPECT_EQ(null_stream.sgetc(), std::char_traits<char>::eof()); }

TEST(NullStream, ClosesItsFileWhenItGoes) {
  std::string path = "/tmp/mvx2-null-stream-XXXXXX";
  close(mkstemp(path.data()));
  {
    NullStream stream;
    stream.open(path, std::ios_base::out);
    std::ostream(&stream) << "not flushed";
  }
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  unlink(path.c_str());
  EXPECT_EQ(content.str(), "not flushed");
}

}  // namespace
