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

// The columns of a row of ##InternalList or ##InternalBlob that the check
// reads; null when the table lacks one.
struct RowColumns {
  zdb_Column const* m_Target = nullptr;
  zdb_Column const* m_Columns = nullptr;  // a list's Target#Columns
};

// The rows of the tables of ##InternalList and ##InternalBlob, and the
// ##List tables the lists lead to.
//
// Invariant: m_Lists holds the handle of every ##List table queued or checked.
class CollectionRows {
public:
  CollectionRows(zdb_ObjectFile const& file, zdb_CheckReport& report) : m_File(file), m_Report(report) {}

  void CheckClass(std::uint32_t classId);

private:
  // Checks row number of the table of subject, queueing in lists a ##List
  // table it is the first to lead to.
  void CheckRow(rfm_Row const& row, int number, RowColumns const& columns, std::string const& subject,
                std::vector<int>& lists);
  void Problem(std::string const& subject, int number, zdb_Column const& column, std::string const& text) {
    m_Report.RepeatedProblem(subject, subject + ": row " + std::to_string(number) + ", " +
                                          zdb_QuotedText(column.m_Name) + ": " + text);
  }

  zdb_ObjectFile const& m_File;
  zdb_CheckReport& m_Report;
  std::set<int> m_Lists;
};

void CollectionRows::CheckClass(std::uint32_t classId) {
  zdb_ClassRow const* row = m_File.Catalogue().Find(classId);
  if (row == nullptr || !row->m_TableFound) return;
  std::string why;
  rfm_Table table = m_File.Finder().Find(*row->m_TableHandle, why);
  if (table.IsNull()) return;
  std::string subject = zdb_TableSubject(row->m_TableName, *row->m_TableHandle);
  std::string columnsName = std::string(kRomTargetName) + kRomColumnsSuffix;
  std::vector<int> lists;  // the ##List tables first reached from this table, checked after its rows
  try {
    std::vector<zdb_Column> all = m_File.Columns(table);
    RowColumns columns;
    for (zdb_Column const& column : all) {
      if (column.m_Kind == zdb_Column::kListTarget || column.m_Kind == zdb_Column::kBlobTarget) {
        columns.m_Target = &column;
      } else if (classId == kRomInternalListClass && column.m_Kind == zdb_Column::kField &&
                 column.m_Type == rfm_TypeInt && column.m_Name == columnsName) {
        columns.m_Columns = &column;
      }
    }
    int rows = table.Length();
    for (int number = 0; number < rows; ++number) CheckRow(table.ReadRow(number), number, columns, subject, lists);
  } catch (std::exception const& e) {
    m_Report.Problem(subject + ": its rows cannot be read: " + e.what());
  }
  for (int handle : lists) {
    rfm_Table list = m_File.Finder().Find(handle, why);
    if (!list.IsNull()) zdb_CheckTableReferences(m_File, list, zdb_TableSubject(kRomListTableName, handle), m_Report);
  }
}

void CollectionRows::CheckRow(rfm_Row const& row, int number, RowColumns const& columns, std::string const& subject,
                              std::vector<int>& lists) {
  zdb_Column const* target = columns.m_Target;
  if (target != nullptr && row.DataIsPresent(rfm_FieldHandle(target->m_Index))) {
    int handle = row.ReadFieldHandle(rfm_FieldHandle(target->m_Index)).Value();
    zdb_CollectionTarget found = target->m_Kind == zdb_Column::kListTarget
                                     ? zdb_CollectionTarget::OfList(m_File.Finder(), handle)
                                     : zdb_CollectionTarget::OfBlob(m_File.Finder(), handle);
    if (!found.Found()) {
      Problem(subject, number, *target, std::to_string(handle) + " " + found.m_Problem);
    } else if (found.m_ObjectList && m_Lists.insert(handle).second) {
      lists.push_back(handle);
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
}
