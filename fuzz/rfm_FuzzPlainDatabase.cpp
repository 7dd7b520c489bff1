// Opens a plain database made of the input and reads all of it.

#include "rfm_DatabaseWalk.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static cow_String const path = rfm_FuzzInput::ScratchFile("plain.zdb");
  rfm_FuzzInput::WriteFile(path, data, size);
  // A file that begins as a compressed one is the compressed target's.
  if (rfm_FileReprEncoded::IsEncoded(path)) return 0;
  rfm_FuzzInput::Expect([] { rfm_DatabaseWalk::Walk(path); });
  return 0;
}
