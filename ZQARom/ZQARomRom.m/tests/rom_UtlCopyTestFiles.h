#ifndef rom_UtlCopyTestFiles_h
#define rom_UtlCopyTestFiles_h

// What the tests of rom_UtlCopy share: targets of both file kinds, the
// text of what a copy raises, and zdb's check of a copy.

#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_File.h"
#include "zdb_Check.h"
#include "zdb_CheckObjectLayer.h"
#include "zdb_CheckReport.h"

#include <string>
#include <vector>

enum class rom_CopyTarget { kPlain, kCompressed };

inline rfm_File rom_CreateCopyTarget(rom_CopyTarget kind, cow_String const& path) {
  return kind == rom_CopyTarget::kCompressed ? rfm_File::CreateCompressed(path)
                                             : rfm_File::Open(path, utl_FileAccessCreate, false);
}

inline std::string rom_CopyTargetName(rom_CopyTarget kind) {
  return kind == rom_CopyTarget::kCompressed ? "Compressed" : "Plain";
}

// The text of the library's user error that body raises; empty when it
// raises none.
template <class Body>
std::string rom_RaisedText(Body body) {
  try {
    body();
  } catch (nex_PrimException<atr_String, 1> const& raised) {
    return raised.what();
  }
  return std::string();
}

// What zdb check finds wrong with the file at path, whose object layer it
// must find: empty when nothing.
inline std::vector<std::string> rom_CheckProblems(cow_String const& path) {
  zdb_CheckReport report;
  zdb_CheckFile(path.CStr(), report);
  if (report.Clean() && zdb_CheckObjectLayer(path.CStr(), report).empty())
    report.Problem("zdb check found no object layer");
  return report.Lines();
}

#endif
