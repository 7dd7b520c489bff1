#ifndef rfm_FuzzInput_h
#define rfm_FuzzInput_h

#include "cow_String.h"
#include "rfm_Handle.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

// What the fuzz targets and their seed program share: a scratch file for
// each input, the database that carries a fuzzed tagged stream, and the
// rule for how an input may end.
class rfm_FuzzInput {
public:
  // A file of this process in a directory of its own under TMPDIR, which
  // goes when the process ends normally.
  static cow_String ScratchFile(char const* name);
  static void WriteFile(cow_String const& path, std::uint8_t const* data, std::size_t size);
  // Runs body. A damaged input may end in one of the library's exceptions;
  // anything else escapes, and the fuzzer reports it with the input.
  static void Expect(std::function<void()> const& body);

  // A new database at path whose first object (handle 4) is a tagged stream
  // of the sample's items, so that the pool holds their strings, and whose
  // second (handle 5) is a space of the given bytes.
  static void WriteStreamDatabase(cow_String const& path, std::string const& bytes);
  static constexpr int kSampleStream = 4;
  static constexpr int kFuzzedStream = 5;
};

#endif
