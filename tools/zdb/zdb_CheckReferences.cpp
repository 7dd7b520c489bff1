#include "zdb_CheckReferences.h"

#include "rom_HeaderLayout.h"
#include "zdb_CheckReport.h"
#include "zdb_ObjectFile.h"
#include "zdb_TableColumns.h"
#include "zdb_Text.h"

#include <exception>
#include <set>

namespace {

// What is wrong with a reference of column, or "" when nothing is.
std::string Problem(zdb_ObjectFile const& file, zdb_Column const& column, zdb_StoredReference const& reference) {
  if (!reference.m_Oid || !reference.m_ClassId) return std::string();
  std::uint32_t classId = *reference.m_ClassId;
  int oid = *reference.m_Oid;
  zdb_ClassRow const* target = file.Catalogue().Find(classId);
  // A collection's row stores an object of a class without a table as a
  // negative oid with that class's id, which the catalogue lacks.
  if (column.m_Kind == zdb_Column::kElementReference && oid < 0) return std::string();
  if (column.m_Kind != zdb_Column::kBaseReference) {
    if (classId == kRomNoClass) {
      if (oid < 0) return std::string();
      return "class id " + zdb_HexWord(classId) + " means no class, but its oid " + std::to_string(oid) +
             " is not negative";
    }
    if (target == nullptr && !rom_IsInternalClass(classId)) {
      return "class id " + zdb_HexWord(classId) + " names no class of the catalogue";
    }
    if (target == nullptr && oid >= 0) {
      return file.Label(classId, oid) + " lies in no table: the catalogue has no class " + zdb_HexWord(classId);
    }
  }
  // A base class that the catalogue lacks, and a class table that was not
  // found, are the catalogue's problems, reported with it.
  if (oid < 0 || target == nullptr || !target->m_TableFound || oid < target->m_TableRows) return std::string();
  int rows = target->m_TableRows;
  return file.Label(classId, oid) + " is past the end of " +
         zdb_TableSubject(target->m_TableName, *target->m_TableHandle) + ", which has " + std::to_string(rows) +
         (rows == 1 ? " row" : " rows");
}

}  // namespace

std::string zdb_TableSubject(std::string const& name, int handle) {
  return "table " + zdb_QuotedText(name) + " at handle " + std::to_string(handle);
}

void zdb_CheckTableReferences(zdb_ObjectFile const& file, rfm_Table const& table, std::string const& subject,
                              zdb_CheckReport& report) {
  try {
    std::vector<zdb_Column> references;
    for (zdb_Column const& column : file.Columns(table)) {
      if (zdb_IsReference(column)) references.push_back(column);
    }
    if (references.empty()) return;
    int rows = table.Length();
    for (int number = 0; number < rows; ++number) {
      rfm_Row stored = table.ReadRow(number);
      for (zdb_Column const& column : references) {
        std::string problem = Problem(file, column, zdb_ReadReference(stored, column));
        if (problem.empty()) continue;
        report.RepeatedProblem(subject, subject + ": row " + std::to_string(number) + ", " +
                                            zdb_QuotedText(column.m_Name) + ": " + problem);
      }
    }
  } catch (std::exception const& e) {
    report.Problem(subject + ": its references cannot be read: " + e.what());
  }
}

void zdb_CheckReferences(zdb_ObjectFile const& file, zdb_CheckReport& report) {
  std::set<int> checked;
  for (zdb_ClassRow const& row : file.Catalogue().Rows()) {
    if (!row.m_TableFound || !checked.insert(*row.m_TableHandle).second) continue;
    std::string why;
    rfm_Table table = file.Finder().Find(*row.m_TableHandle, why);
    if (!table.IsNull()) {
      zdb_CheckTableReferences(file, table, zdb_TableSubject(row.m_TableName, *row.m_TableHandle), report);
    }
  }
}
