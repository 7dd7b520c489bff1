#include "zdb_CheckObjectLayer.h"

#include "rfm_TypeName.h"
#include "rom_HeaderLayout.h"
#include "zdb_CheckCollections.h"
#include "zdb_CheckReferences.h"
#include "zdb_CheckReport.h"
#include "zdb_ClassCatalogue.h"
#include "zdb_Database.h"
#include "zdb_ObjectFile.h"
#include "zdb_ObjectHeader.h"
#include "zdb_Text.h"

#include <cstdint>
#include <exception>
#include <map>
#include <string>

namespace {

// The checks between the classes of one catalogue.
class ClassRules {
public:
  ClassRules(zdb_ClassCatalogue const& catalogue, zdb_CheckReport& report) : m_Catalogue(catalogue), m_Report(report) {}

  void Check() {
    std::map<std::uint32_t, int> rowsPerId;
    for (zdb_ClassRow const& row : m_Catalogue.Rows()) {
      if (row.m_ClassId) ++rowsPerId[*row.m_ClassId];
    }
    for (zdb_ClassRow const& row : m_Catalogue.Rows()) {
      if (!row.m_ClassId) continue;
      std::uint32_t id = *row.m_ClassId;
      if (id == kRomNoClass) Problem(row, "its class id is the one that means no class");
      int rows = rowsPerId[id];
      if (rows > 1 && m_Catalogue.Find(id) == &row) {
        Problem(row, "the catalogue has " + std::to_string(rows) + " rows for its class id");
      }
      CheckTable(row);
      CheckBase(row);
    }
  }

private:
  void Problem(zdb_ClassRow const& row, std::string const& text) {
    m_Report.Problem(zdb_ClassCatalogue::Subject(row) + ": " + text);
  }

  // A class as a line names another: by its row when the catalogue has it.
  std::string Name(std::uint32_t classId) const {
    zdb_ClassRow const* row = m_Catalogue.Find(classId);
    return row ? zdb_ClassCatalogue::Subject(*row) : "class " + zdb_HexWord(classId);
  }

  void CheckTable(zdb_ClassRow const& row) {
    if (!row.m_TableHandle) return;
    std::string table = "its table at handle " + std::to_string(*row.m_TableHandle);
    if (!row.m_TableFound) {
      Problem(row, "its table handle " + std::to_string(*row.m_TableHandle) + " " + row.m_TableMissing);
      return;
    }
    if (row.m_Name && row.m_TableName != *row.m_Name) {
      Problem(row, table + " is named " + zdb_QuotedText(row.m_TableName));
    }
    if (!row.m_BaseClassId) return;
    std::string field = zdb_QuotedText(kRomBaseClassOidName);
    bool derived = *row.m_BaseClassId != kRomNoClass;
    if (derived && row.m_BaseOidType == rfm_TypeNone) {
      Problem(row, "it derives from " + Name(*row.m_BaseClassId) + ", but " + table + " has no field " + field);
    } else if (!derived && row.m_BaseOidType != rfm_TypeNone) {
      Problem(row, "it has no base class, but " + table + " has a field " + field);
    } else if (derived && row.m_BaseOidType != rfm_TypeInt) {
      Problem(row, "the field " + field + " of " + table + " holds " +
                       zdb_WithArticle(rfm_TypeName(row.m_BaseOidType)) + ", not an int");
    }
  }

  void CheckBase(zdb_ClassRow const& row) {
    if (!row.m_BaseClassId || *row.m_BaseClassId == kRomNoClass) return;
    if (m_Catalogue.Find(*row.m_BaseClassId) == nullptr) {
      Problem(row, "its base class " + zdb_HexWord(*row.m_BaseClassId) + " is not in the catalogue");
      return;
    }
    // A walk up from a class in such a circle never reaches a root class.
    std::uint32_t at = *row.m_BaseClassId;
    for (std::size_t step = 0; step < m_Catalogue.Rows().size() && at != kRomNoClass; ++step) {
      if (at == *row.m_ClassId) {
        Problem(row, "its chain of base classes comes back to it");
        return;
      }
      zdb_ClassRow const* base = m_Catalogue.Find(at);
      if (base == nullptr || !base->m_BaseClassId) return;
      at = *base->m_BaseClassId;
    }
  }

  zdb_ClassCatalogue const& m_Catalogue;
  zdb_CheckReport& m_Report;
};

}  // namespace

std::string zdb_CheckObjectLayer(std::string const& name, zdb_CheckReport& report) {
  try {
    zdb_Database database(name);
    zdb_ObjectFile file(database.Database());
    if (!file.Present()) return std::string();
    for (std::string const& problem : file.Header().Problems()) report.Problem(problem);
    zdb_ClassCatalogue const& catalogue = file.Catalogue();
    for (std::string const& problem : catalogue.Problems()) report.Problem(problem);
    ClassRules(catalogue, report).Check();
    zdb_CheckReferences(file, report);
    zdb_CheckCollections(file, report);
    std::size_t classes = catalogue.Rows().size();
    return std::string("object header (") + zdb_ObjectHeader::FormName(file.Header().GetForm()) + "), " +
           std::to_string(classes) + (classes == 1 ? " class" : " classes");
  } catch (std::exception const& e) {
    report.Problem(std::string("the object layer cannot be read: ") + e.what());
    return std::string();
  }
}
