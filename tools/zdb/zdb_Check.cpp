// zdb check: a structural check of a database file that reads the file's
// bytes itself, validates every offset, length and count before it uses
// them, and reports each problem on a line of its own.

#include "zdb_Check.h"

#include "ZQABasUtlFilePath.h"
#include "rfm_FileRepr.h"
#include "rfm_ObjectMagic.h"
#include "zdb_Arguments.h"
#include "zdb_CheckBlock0.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckCatalogue.h"
#include "zdb_CheckLinkage.h"
#include "zdb_CheckObjectLayer.h"
#include "zdb_CheckObjects.h"
#include "zdb_CheckPool.h"
#include "zdb_CheckReport.h"
#include "zdb_Command.h"
#include "zdb_Failure.h"

#include <algorithm>
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

}  // namespace

std::string zdb_CheckFile(std::string const& name, zdb_CheckReport& report) {
  rfm_File file;
  try {
    file = rfm_File::Open(name.c_str(), utl_FileAccessRead, false);
  } catch (std::exception const& e) {
    report.Problem(std::string("the file cannot be opened: ") + e.what());
    return std::string();
  }
  bool compressed = file.Kind() == rfm_FileKindCompressed;
  zdb_CheckBytes bytes(file, report);
  // Every segment of a compressed container that stores data is decoded
  // once, so that its damage shows wherever it lies. Past the last stream
  // there is nothing to decode, however many segments the header claims.
  utl_FileOffset const stored = file->LengthStored();
  if (compressed) bytes.ReadAll(stored);
  std::string kind = compressed ? "compressed file" : "plain file";
  if (!zdb_CheckBlock0(bytes, compressed, report)) return kind;
  zdb_CheckLinkage linkage(bytes, report);
  linkage.Run();
  // As the library refuses it: bytes claimed past the database's end that
  // the file does not store.
  if (bytes.Length() > std::max(linkage.End(), stored)) {
    report.Problem("the file claims " + std::to_string(bytes.Length()) + " bytes, but the database ends at " +
                   std::to_string(linkage.End()) + " and the file stores " + std::to_string(stored));
  }
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

namespace {

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 1);
  std::string const& name = arguments.Positional(0);
  ZQABasUtlFilePath path(name.c_str(), cow_String());
  if (!path.Exists()) throw zdb_Failure(name + ": no such file");
  if (!path.IsReadable()) throw zdb_Failure(name + ": no permission to read it");
  zdb_CheckReport report;
  std::string found;
  try {
    found = zdb_CheckFile(name, report);
  } catch (std::exception const& e) {
    // The checker validates what it reads; this is a failure of its own, such as memory.
    report.Problem(std::string("the check stopped: ") + e.what());
  }
  // The object layer is read through the library, which reads every object
  // of a file exactly when the record store's check finds nothing; in a
  // damaged file its problems would only echo those already found.
  if (report.Clean()) {
    std::string objects = zdb_CheckObjectLayer(name, report);
    if (!objects.empty()) found += "; " + objects;
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
    "segment decoded once) and checks block 0 (magic, version, and\n"
    "the transfer check record of a plain file), the chain of linkage groups,\n"
    "every linkage (valid sizes, a length not above its allocation, an extent\n"
    "inside the file), every object's chain (cycles, chains that run into\n"
    "another object's, chains without a head), overlaps between block 0, the\n"
    "groups and the extents, the string pool, the table catalogue, and every\n"
    "table, array and tagged stream: headers, layouts, rows, item tags and\n"
    "sizes, and that every stored string is in the pool.\n"
    "It holds the file to the rules by which the library reads it, so that it\n"
    "finds a problem exactly when the library cannot open the file or one of\n"
    "its objects; what no reader looks at (free linkage slots, a torn last\n"
    "row) is no problem.\n"
    "\n"
    "When the record store has no problems and the file is the object layer's\n"
    "(its table catalogue holds the layout of the class catalogue), it checks\n"
    "what that layer reads beyond the record store: the object header at the\n"
    "root (its form, its items' types, a catalogue table with the catalogue's\n"
    "fields) and every class of the catalogue (one row per class id, a table\n"
    "named after the class, the base class's row field exactly in a derived\n"
    "class's table, a base class that the catalogue holds, no circle of base\n"
    "classes), then the references to objects in every class table, and in no\n"
    "other table: a class id that names no class of the catalogue, no internal\n"
    "class, nor the null reference's class with a negative oid; an oid, or a\n"
    "derived class's ##BaseClassOID, past the end of its class's table, or an\n"
    "oid of a class that has no table. Then the lists, blobs and maps: a row\n"
    "of ##InternalList whose Target#Handle names no object, or one that is no\n"
    "list's store (an array of one field a row, or a table of the ##List or\n"
    "##StringArray layout), or whose Target#Columns is below 1; a row of\n"
    "##InternalBlob whose handle names no object; a row of ##InternalMap, or\n"
    "either handle of a row of ##InternalDblCol, that names no table of a\n"
    "map's layout; and the references of every ##List, ##Map and ##MapInt2Obj\n"
    "table that a collection leads to, as a class table's, where a negative\n"
    "oid of any class is a null entry. The summary then names the header's\n"
    "form and the classes.\n"
    "\n"
    "Prints each problem on a line of its own (a problem repeated in every row\n"
    "of one object, or a table's bad references or collections, five times,\n"
    "then counted), then a summary line naming the file. Exit status 0 when\n"
    "nothing was found, 1 when something was. Check a file while no writer is\n"
    "flushing it: a flush half done looks damaged.\n",
    Run,
};
