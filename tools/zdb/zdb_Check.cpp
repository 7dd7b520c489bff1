// zdb check: a structural check of a database file that reads the file's
// bytes itself, validates every offset, length and count before it uses
// them, and reports each problem on a line of its own.

#include "ZQABasUtlFilePath.h"
#include "rfm_ObjectMagic.h"
#include "zdb_Arguments.h"
#include "zdb_CheckBlock0.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckCatalogue.h"
#include "zdb_CheckLinkage.h"
#include "zdb_CheckObjects.h"
#include "zdb_CheckPool.h"
#include "zdb_CheckReport.h"
#include "zdb_Command.h"
#include "zdb_Failure.h"

#include <cstdio>
#include <map>
#include <memory>

namespace {

// The space of a well-known object, when the linkage check found it.
std::unique_ptr<zdb_CheckSpace> WellKnown(zdb_CheckBytes& bytes, zdb_CheckLinkage const& linkage, int handle) {
  auto found = linkage.Objects().find(handle);
  if (found == linkage.Objects().end()) return nullptr;
  return std::make_unique<zdb_CheckSpace>(bytes, rfm_Handle(handle), found->second);
}

// Checks the file; answers what it found, "12 objects: 3 tables, ..." when
// it got as far as the objects.
std::string Check(std::string const& name, zdb_CheckReport& report) {
  rfm_File file;
  try {
    file = rfm_File::Open(name.c_str(), utl_FileAccessRead, false);
  } catch (std::exception const& e) {
    report.Problem(std::string("the file cannot be opened: ") + e.what());
    return std::string();
  }
  bool compressed = file.Kind() == rfm_FileKindCompressed;
  zdb_CheckBytes bytes(file, report);
  // Every segment of a compressed container is decoded once, so that its
  // damage shows wherever it lies.
  if (compressed) bytes.ReadAll();
  std::string kind = compressed ? "compressed file" : "plain file";
  if (!zdb_CheckBlock0(bytes, compressed, report)) return kind;
  zdb_CheckLinkage linkage(bytes, report);
  linkage.Run();
  std::unique_ptr<zdb_CheckSpace> poolSpace = WellKnown(bytes, linkage, kRfmStringPoolHandle);
  zdb_CheckPool pool(poolSpace.get(), report);
  std::unique_ptr<zdb_CheckSpace> catalogueSpace = WellKnown(bytes, linkage, kRfmMetadataHandle);
  zdb_CheckCatalogue catalogue(catalogueSpace.get(), pool, report);
  zdb_CheckObjects objects(pool, catalogue, report);
  std::map<std::string, int> kinds;
  for (auto const& [handle, extents] : linkage.Objects()) {
    bool checkedAlready = handle == kRfmStringPoolHandle || handle == kRfmMetadataHandle;
    ++kinds[checkedAlready ? "space" : objects.Check(zdb_CheckSpace(bytes, rfm_Handle(handle), extents))];
  }
  std::size_t count = linkage.Objects().size();
  std::string found = kind + ", " + std::to_string(count) + (count == 1 ? " object" : " objects");
  char const* separator = ": ";
  for (auto const& [what, count] : kinds) {
    found += separator + std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    separator = ", ";
  }
  return found;
}

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 1);
  std::string const& name = arguments.Positional(0);
  ZQABasUtlFilePath path(name.c_str(), cow_String());
  if (!path.Exists()) throw zdb_Failure(name + ": no such file");
  if (!path.IsReadable()) throw zdb_Failure(name + ": no permission to read it");
  zdb_CheckReport report;
  std::string found;
  try {
    found = Check(name, report);
  } catch (std::exception const& e) {
    // The checker validates what it reads; this is a failure of its own, such as memory.
    report.Problem(std::string("the check stopped: ") + e.what());
  }
  report.Close();
  for (std::string const& line : report.Lines()) std::printf("%s\n", line.c_str());
  std::string summary = found.empty() ? std::string() : " (" + found + ")";
  if (report.Clean()) {
    std::printf("%s: no problems found%s\n", name.c_str(), summary.c_str());
    return kZdbSuccess;
  }
  std::size_t count = report.Lines().size();
  std::printf("%s: %zu problem%s%s\n", name.c_str(), count, count == 1 ? "" : "s", summary.c_str());
  return kZdbFailed;
}

}  // namespace

zdb_Command const zdb_CheckCommand = {
    "check",
    "a structural integrity check; exit status 1 when it finds problems",
    "usage: zdb check FILE\n"
    "\n"
    "Reads the file's bytes itself (a compressed file's logical bytes, every\n"
    "segment decoded once) and checks block 0 (magic, version, flush count,\n"
    "the transfer check record of a plain file), the chain of linkage groups,\n"
    "every linkage (valid sizes, a length not above its allocation, an extent\n"
    "inside the file), every object's chain (cycles, chains that run into\n"
    "another object's, chains without a head), overlaps between block 0, the\n"
    "groups and the extents, the string pool, the table catalogue, and every\n"
    "table, array and tagged stream: headers, layouts, whole rows, presence\n"
    "bits, item tags and sizes, and that every stored string is in the pool.\n"
    "\n"
    "Prints each problem on a line of its own (a problem repeated in every row\n"
    "of one object five times, then counted), then a summary line naming the\n"
    "file. Exit status 0 when nothing was found, 1 when something was. Check a\n"
    "file while no writer is flushing it: a flush half done looks damaged.\n",
    Run,
};
