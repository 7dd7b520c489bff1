// zdb classes: the object layer's class catalogue, one line per class.

#include "rom_HeaderLayout.h"
#include "zdb_Arguments.h"
#include "zdb_ClassCatalogue.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"
#include "zdb_ObjectHeader.h"
#include "zdb_TableFinder.h"
#include "zdb_Text.h"

#include <algorithm>
#include <cstdio>

namespace {

// What a listing shows for a value that the catalogue's row lacks.
constexpr char kLacking[] = "?";
// What it shows for no version, and for no base class.
constexpr char kNone[] = "-";

struct Line {
  std::string m_Id;
  std::string m_Name;
  std::string m_Version;
  std::string m_Base;
  std::string m_Table;
  std::string m_Rows;
};

Line Describe(zdb_ClassCatalogue const& catalogue, zdb_ClassRow const& row) {
  Line line;
  line.m_Id = row.m_ClassId ? zdb_HexWord(*row.m_ClassId) : kLacking;
  line.m_Name = row.m_Name.value_or(kLacking);
  line.m_Version = row.m_Version ? std::to_string(*row.m_Version) : kNone;
  if (!row.m_BaseClassId) {
    line.m_Base = kLacking;
  } else if (*row.m_BaseClassId == kRomNoClass) {
    line.m_Base = kNone;
  } else {
    zdb_ClassRow const* base = catalogue.Find(*row.m_BaseClassId);
    line.m_Base = base && base->m_Name ? *base->m_Name : zdb_HexWord(*row.m_BaseClassId);
  }
  line.m_Table = row.m_TableHandle ? std::to_string(*row.m_TableHandle) : kLacking;
  line.m_Rows = row.m_TableFound ? std::to_string(row.m_TableRows) : kLacking;
  return line;
}

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {}, 1);
  zdb_Database database(arguments.Positional(0));
  std::string const& name = database.Name();
  return zdb_OnFile(name, [&] {
    zdb_TableFinder finder(database.Database());
    zdb_ObjectHeader header(database.Database(), finder);
    if (!header.Present()) {
      throw zdb_Failure(name + ": no object header: the file has no " + zdb_QuotedText(kRomCatalogName) + " table");
    }
    if (header.Catalogue().IsNull()) {
      std::string why = header.Problems().empty() ? std::string() : ": " + header.Problems().front();
      throw zdb_Failure(name + ": the object header names no class catalogue that can be read" + why);
    }
    zdb_ClassCatalogue catalogue(header.Catalogue(), finder);
    std::vector<std::string> reasons = catalogue.Problems();
    std::vector<Line> lines;
    for (zdb_ClassRow const& row : catalogue.Rows()) {
      lines.push_back(Describe(catalogue, row));
      if (row.m_TableHandle && !row.m_TableFound) {
        reasons.push_back(zdb_ClassCatalogue::Subject(row) + ": its table handle " +
                          std::to_string(*row.m_TableHandle) + " " + row.m_TableMissing);
      }
    }
    if (lines.empty()) {
      std::printf("no classes\n");
    } else {
      Line const heading = {"class id", "name", "version", "base class", "table", "rows"};
      int nameWidth = static_cast<int>(heading.m_Name.size());
      int baseWidth = static_cast<int>(heading.m_Base.size());
      for (Line const& line : lines) {
        nameWidth = std::max(nameWidth, static_cast<int>(line.m_Name.size()));
        baseWidth = std::max(baseWidth, static_cast<int>(line.m_Base.size()));
      }
      lines.insert(lines.begin(), heading);
      for (Line const& line : lines) {
        std::printf("%-10s  %-*s  %7s  %-*s  %10s  %10s\n", line.m_Id.c_str(), nameWidth, line.m_Name.c_str(),
                    line.m_Version.c_str(), baseWidth, line.m_Base.c_str(), line.m_Table.c_str(), line.m_Rows.c_str());
      }
    }
    for (std::string const& reason : reasons)
      std::fprintf(stderr, "zdb classes: %s: %s\n", name.c_str(), reason.c_str());
    return reasons.empty() ? kZdbSuccess : kZdbFailed;
  });
}

}  // namespace

zdb_Command const zdb_ClassesCommand = {
    "classes",
    "the object layer's class catalogue: one line per class",
    "usage: zdb classes FILE\n"
    "\n"
    "Lists the class catalogue of a file of the object layer, a line per row\n"
    "in stored order: the class id in hexadecimal, the class's name, its\n"
    "version (- when the row holds none), its base class (its name when the\n"
    "catalogue holds it, else its id; - for none), the handle of its table and\n"
    "the table's number of rows. A value the row lacks shows as ?. When the\n"
    "catalogue is damaged (a row that cannot be read or lacks a value, a table\n"
    "handle that names no table), the reasons go to standard error and the\n"
    "exit status is 1; a file without an object header is an error.\n",
    Run,
};
