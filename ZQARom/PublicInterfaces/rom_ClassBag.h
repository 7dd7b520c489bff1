#ifndef rom_ClassBag_h
#define rom_ClassBag_h

#include "ZQABasExport.h"
#include "rfm_FieldHandle.h"
#include "rfm_Table.h"

#include <vector>

class cls_FieldHandle;

// What a transporter keeps of one class it has touched: the class's open
// table (none for a class that stores nothing) and the map from the class's
// field ids to the table's column indexes, so that after the first use a
// field costs one array lookup. An unmapped field answers -1, which the
// record store takes as "find the column by name": a table stored under
// another layout of the class still answers.
//
// Invariant: the index map has MaxFieldID() + 1 entries, each -1 or a
// column of the table.
class ZQA_EXPORT rom_ClassBag {
public:
  explicit rom_ClassBag(int maxFieldId);

  void SetTable(rfm_Table const& table) { m_Table = table; }
  rfm_Table const& Table() const { return m_Table; }
  bool HasTable() const { return !m_Table.IsNull(); }

  // Both ignore a negative entry and an empty map, and raise an assertion
  // for an entry beyond the map.
  void SetFieldMapEntry(int entryIndex, int column);
  int MapField(int entryIndex) const;

  // The column of a member: by index when the class's version declares its
  // field id; by name for a member named only by its name (a negative field
  // id); and for a field id the version does not declare, no column at all,
  // so that the member reads as absent even where a table of another
  // version of the class has a column of its name.
  rfm_FieldHandle Column(cls_FieldHandle const& field) const;
  // The two columns of a reference member: the object id's and, right after
  // it, the class id's.
  void ReferenceColumns(cls_FieldHandle const& field, rfm_FieldHandle& oid, rfm_FieldHandle& classId) const;

private:
  int ColumnIndex(int fieldId) const;
  void CheckEntry(int entryIndex) const;

  rfm_Table m_Table;
  int m_IndexMapArraySize;
  std::vector<int> m_IndexMap;
};

#endif
