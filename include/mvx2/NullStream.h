/**
 * @file
 * The buffer behind the log stream of the device facade: it discards everything.
 */
#ifndef MVX2_NULLSTREAM_H
#define MVX2_NULLSTREAM_H

#include <mvx2/export.h>

#include <fstream>

/** A file stream buffer that closes its file before it goes. */
class MVX2_API NullStream : public std::filebuf {
 public:
  NullStream();
  NullStream(const NullStream&) = delete;
  NullStream(NullStream&&) = delete;
  NullStream& operator=(const NullStream&) = delete;
  NullStream& operator=(NullStream&&) = delete;
  ~NullStream() override;
};

/**
 * The one buffer that every facade logs into: open on "/dev/null" for output from the load of the library to
 * its unload, and shared by all facades without a lock.
 *
 * A program that wants to read the log closes it and opens it on a file of its own while no facade is in use.
 */
extern MVX2_API NullStream null_stream;

#endif
