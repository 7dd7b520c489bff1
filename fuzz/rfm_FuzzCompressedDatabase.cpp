// Opens a compressed database made of the input and reads all of it: the
// container's sectors and streams, the segments' zlib data, the last byte
// the container claims, and the database they unpack to, with the next segment decoded on a second
// thread as for any file opened for reading.

#include "rfm_DatabaseWalk.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static cow_String const path = rfm_FuzzInput::ScratchFile("compressed.zdb");
  rfm_FuzzInput::WriteFile(path, data, size);
  // A file that does not begin as a compressed one is the plain target's.
  if (!rfm_FileReprEncoded::IsEncoded(path)) return 0;
  rfm_FuzzInput::Expect([] { rfm_DatabaseWalk::Walk(path); });
  return 0;
}
