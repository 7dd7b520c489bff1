#include "zdb_CheckCollections.h"

#include "rom_HeaderLayout.h"
#include "zdb_CheckReferences.h"
#include "zdb_CheckReport.h"
#include "zdb_CollectionTarget.h"
#include "zdb_ObjectFile.h"
#include "zdb_TableColumns.h"
#include "zdb_Text.h"

#include <exception>
#include <set>
#include <vector>

namespace {

// The columns of a row of a collection class that the check reads.
struct RowColumns {
  std::vector<zdb_Column const*> m_Targets;  // one, or a double collection's two
  zdb_Column const* m_Columns = nullptr;     // a list's Target#Columns; null when the table lacks it
};

// A table whose rows refer to objects, reached from a collection's row.
struct ObjectRows {
  int m_Handle;
  std::string m_Layout;
};

// The rows of the tables of the collection classes, and the tables of
// objects (##List, ##Map, ##MapInt2Obj) that they lead to.
//
// Invariant: m_Reached holds the handle of every such table queued or
// checked, so that each is checked once however many rows share it.
class CollectionRows {
public:
  CollectionRows(zdb_ObjectFile const& file, zdb_CheckReport& report) : m_File(file), m_Report(report) {}

  void CheckClass(std::uint32_t classId);

private:
  // Checks row number of the table of subject, queueing in tables a table
  // of objects it is the first to lead to.
  void CheckRow(rfm_Row const& row, int number, RowColumns const& columns, std::string const& subject,
                std::vector<ObjectRows>& tables);
  void Problem(std::string const& subject, int number, zdb_Column const& column, std::string const& text) {
    m_Report.RepeatedProblem(subject, subject + ": row " + std::to_string(number) + ", " +
                                          zdb_QuotedText(column.m_Name) + ": " + text);
  }

  zdb_ObjectFile const& m_File;
  zdb_CheckReport& m_Report;
  std::set<int> m_Reached;
};

void CollectionRows::CheckClass(std::uint32_t classId) {
  zdb_ClassRow const* row = m_File.Catalogue().Find(classId);
  if (row == nullptr || !row->m_TableFound) return;
  std::string why;
  rfm_Table table = m_File.Finder().Find(*row->m_TableHandle, why);
  if (table.IsNull()) return;
  std::string subject = zdb_TableSubject(row->m_TableName, *row->m_TableHandle);
  std::string columnsName = std::string(kRomTargetName) + kRomColumnsSuffix;
  std::vector<ObjectRows> tables;  // first reached from this table, checked after its rows
  try {
    std::vector<zdb_Column> all = m_File.Columns(table);
    RowColumns columns;
    for (zdb_Column const& column : all) {
      if (column.m_Kind == zdb_Column::kListTarget || column.m_Kind == zdb_Column::kBlobTarget ||
          column.m_Kind == zdb_Column::kMapTarget) {
        columns.m_Targets.push_back(&column);
      } else if (classId == kRomInternalListClass && column.m_Kind == zdb_Column::kField &&
                 column.m_Type == rfm_TypeInt && column.m_Name == columnsName) {
        columns.m_Columns = &column;
      }
    }
    int rows = table.Length();
    for (int number = 0; number < rows; ++number) CheckRow(table.ReadRow(number), number, columns, subject, tables);
  } catch (std::exception const& e) {
    m_Report.Problem(subject + ": its rows cannot be read: " + e.what());
  }
  for (ObjectRows const& reached : tables) {
    rfm_Table objects = m_File.Finder().Find(reached.m_Handle, why);
    if (!objects.IsNull()) {
      zdb_CheckTableReferences(m_File, objects, zdb_TableSubject(reached.m_Layout, reached.m_Handle), m_Report);
    }
  }
}

void CollectionRows::CheckRow(rfm_Row const& row, int number, RowColumns const& columns, std::string const& subject,
                              std::vector<ObjectRows>& tables) {
  for (zdb_Column const* target : columns.m_Targets) {
    if (!row.DataIsPresent(rfm_FieldHandle(target->m_Index))) continue;
    int handle = row.ReadFieldHandle(rfm_FieldHandle(target->m_Index)).Value();
    zdb_CollectionTarget found = zdb_TargetOf(m_File.Finder(), *target, handle);
    if (!found.Found()) {
      Problem(subject, number, *target, std::to_string(handle) + " " + found.m_Problem);
    } else if (found.m_FieldsPerRow != 1) {
      // The object layer refuses such a list rather than guess how its
      // elements lie.
      Problem(subject, number, *target,
              std::to_string(handle) + " names an array of " + std::to_string(found.m_FieldsPerRow) +
                  " fields a row; a list's has 1");
    } else if (found.m_ObjectRows && m_Reached.insert(handle).second) {
      tables.push_back({handle, found.m_Table});
    }
  }
  // No data there means one element a row.
  zdb_Column const* count = columns.m_Columns;
  if (count != nullptr && row.DataIsPresent(rfm_FieldHandle(count->m_Index))) {
    int perRow = row.ReadFieldInt(rfm_FieldHandle(count->m_Index));
    if (perRow < 1) {
      Problem(subject, number, *count, std::to_string(perRow) + " elements per row; a list has 1 or more");
    }
  }
}

}  // namespace

void zdb_CheckCollections(zdb_ObjectFile const& file, zdb_CheckReport& report) {
  CollectionRows rows(file, report);
  rows.CheckClass(kRomInternalListClass);
  rows.CheckClass(kRomInternalBlobClass);
  rows.CheckClass(kRomInternalMapClass);
  rows.CheckClass(kRomInternalDblColClass);
}
