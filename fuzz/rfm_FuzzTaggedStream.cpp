// Reads every item of a tagged stream whose stored bytes, header included,
// are the input.

#include "rfm_Database.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_FuzzInput.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static cow_String const path = rfm_FuzzInput::ScratchFile("stream.zdb");
  rfm_FuzzInput::WriteStreamDatabase(path, std::string(reinterpret_cast<char const*>(data), size));
  rfm_FuzzInput::Expect([] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path, utl_FileAccessRead, false), "FUZZ");
    rfm_DatabaseWalk::WalkTaggedStream(database, rfm_Handle(rfm_FuzzInput::kFuzzedStream));
  });
  return 0;
}
