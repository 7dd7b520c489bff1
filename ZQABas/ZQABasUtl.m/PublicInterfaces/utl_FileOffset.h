#ifndef utl_FileOffset_h
#define utl_FileOffset_h

#include <cstdint>

// A position or size in a file, in bytes.
using utl_FileOffset = std::int64_t;

// How a file is opened.
enum utl_FileAccess {
  utl_FileAccessRead = 0,    // existing file, reading only
  utl_FileAccessUpdate = 1,  // existing file, reading and writing
  utl_FileAccessCreate = 2,  // new or truncated file, reading and writing
};

// How other openers may share a file. POSIX has no mandatory share modes, so
// the value is kept for the caller's record only; processes sharing a
// database coordinate through its marker directory and flush count.
enum utl_FileSharing {
  utl_FileShareNone = 0,
  utl_FileShareRead = 1,
  utl_FileShareAll = 2,
};

#endif
