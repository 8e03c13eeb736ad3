#include <mvx2/NullStream.h>

NullStream::NullStream() = default;

NullStream::~NullStream() { close(); }

NullStream null_stream;

namespace {

// At load: the facades' log streams are bound to this buffer without opening it themselves.
struct OpenAtLoad {
  OpenAtLoad() { null_stream.open("/dev/null", std::ios_base::out); }
} const open_at_load;

}  // namespace
