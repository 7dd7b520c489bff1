// Holds zdb check against the library on a plain database made of the
// input: check must report a problem exactly when the library cannot open
// the file and read every object its groups list (rfm_DatabaseWalk, as
// stored). A disagreement aborts with both verdicts.

#include "ZQABasException.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_FuzzInput.h"
#include "zdb_Check.h"
#include "zdb_CheckReport.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static cow_String const path = rfm_FuzzInput::ScratchFile("plain.zdb");
  rfm_FuzzInput::WriteFile(path, data, size);
  // The compressed container's own damage is the compressed target's.
  if (rfm_FileReprEncoded::IsEncoded(path)) return 0;
  std::string refusal;
  try {
    rfm_DatabaseWalk::WalkStored(path);
  } catch (ZQABasException const& e) {
    refusal = std::string(e.SourcePath()) + ":" + std::to_string(e.Line()) + ": " + e.what();
  }
  zdb_CheckReport report;
  zdb_CheckFile(path.CStr(), report);
  report.Close();
  if (refusal.empty() == report.Clean()) return 0;
  std::fprintf(stderr, "zdb check and the library disagree.\nlibrary: %s\ncheck: %s\n",
               refusal.empty() ? "reads the file" : refusal.c_str(),
               report.Clean() ? "no problems" : report.Lines().front().c_str());
  std::abort();
}
