#ifndef rfm_Table_h
#define rfm_Table_h

#include "cow_List.h"
#include "rfm_Column.h"
#include "rfm_Row.h"
#include "rfm_TableMetadata.h"
#include "utl_FileOffset.h"

class rfm_StringManager;
class rfm_TableRepr;

// A table by value: copies share one representation, which flushes when the
// last copy and the last row taken from it that is still held have gone.
// The table holds a share of its database, which stays open while the table
// lives (see rfm_Database); a held row keeps the table open in turn.
class ZQA_EXPORT rfm_Table {
public:
  rfm_Table();
  // Takes ownership of repr.
  explicit rfm_Table(rfm_TableRepr* repr);
  rfm_Table(rfm_Table const& other);
  rfm_Table& operator=(rfm_Table const& other);
  ~rfm_Table();

  rfm_Row NewRow() const;
  rfm_Row UpdateRow(int row) const;
  rfm_Row ReadRow(int row) const;
  bool RowExists(int row) const;
  void Append(rfm_Table const& other) const;
  int CopyAllowed(rfm_Table const& other) const;
  rfm_FieldMetadata const& GetFieldMD(rfm_FieldHandle const& handle) const;
  rfm_MapName2FieldMetadata const& GetFieldMap() const;
  rfm_TableMetadata const& TableMetadata() const;
  int Index(cow_String const& name) const;
  rfm_Type Type(cow_String const& name) const;
  int RowSize() const;
  void Extend(int rows) const;
  int GetFlushCount() const;
  int Snap() const;
  int Flush() const;
  void Truncate(int rows) const;
  void Seek(int row) const;
  int Location() const;
  int Length() const;
  rfm_Handle Handle() const;
  rfm_StringManager* StringManager() const;
  utl_FileOffset SpaceAllocation() const;
  utl_FileOffset SpaceLength() const;
  cow_List<cow_String> GetObjStatistics() const;

  // Bulk access beside the row interface, over the same rows, cache and
  // file format (see rfm_Column): a reader beside a writer sees the same
  // rows either way. Reads rows first to first + count - 1, clipped to
  // Length(), into each column and returns how many it read; Location()
  // is then the row after the last one read.
  int ReadColumns(int first, int count, rfm_Column const* columns, int columnCount) const;
  int ReadColumn(int first, int count, rfm_Column const& column) const { return ReadColumns(first, count, &column, 1); }
  // Appends count rows made of the columns' values, after every row made
  // so far (also one still held).
  void AppendColumns(int count, rfm_Column const* columns, int columnCount) const;

  bool IsNull() const { return m_Repr == nullptr; }
  // The representation, for the library's own layers.
  rfm_TableRepr& Repr() const { return *m_Repr; }

private:
  void LetGo();

  rfm_TableRepr* m_Repr = nullptr;
};

#endif
