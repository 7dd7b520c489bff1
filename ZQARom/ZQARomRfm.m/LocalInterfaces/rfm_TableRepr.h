#ifndef rfm_TableRepr_h
#define rfm_TableRepr_h

#include "cow_List.h"
#include "omi_Btree.h"
#include "rfm_Column.h"
#include "rfm_Database.h"
#include "rfm_IOBuffer.h"
#include "rfm_ObjectLayout.h"
#include "rfm_Row.h"
#include "rfm_RowImpl.h"
#include "rfm_SpaceRepr.h"
#include "rfm_TableMetadata.h"

#include <memory>
#include <vector>

// A table: a space holding a header and rows of one fixed size, with a
// cache of rows in memory that writes back in row order.
//
//  offset  size                   content
//       0     4                   0xAAAFBBBE
//       4     4                   table flush count, starts at 0
//       8     4                   metadata handle: offset of the table's record in the catalogue
//      12     row size * rows     the rows in row order, without gaps
//
// There is no row count on disk: it is (length - 12) / row size, rounded
// to the nearest whole row. Positions number the present fields in name
// order; the row layout is in rfm_RowImpl.
//
// Invariants: rows below m_RowsOnDisk are in the file; every row at or above
// it is in the cache until written; writing back never leaves a gap in the
// file's tail; a row that an application holds is never dropped.
//
// Lifetime: the table is held by its rfm_Table handles and by the rows that
// an application holds (each held row once, whatever its number of copies);
// the last holder to let go deletes it, and its end writes the rows back.
// The table holds a share of its database, so the database closes after it.
class rfm_TableRepr : public mem_AllocationOperators {
public:
  // A new table for a bound description. cacheRows below 0 means 32.
  rfm_TableRepr(rfm_Database const& database, rfm_TableMetadata* metadata, int quantum, int cacheRows);
  // The existing table at handle.
  rfm_TableRepr(rfm_Database const& database, rfm_Handle const& handle, int quantum, int cacheRows);
  ~rfm_TableRepr();
  rfm_TableRepr(rfm_TableRepr const&) = delete;
  rfm_TableRepr& operator=(rfm_TableRepr const&) = delete;

  // For handles and held rows: one more holder; one fewer, and the last
  // deletes table.
  void AddHolder() { ++m_Holders; }
  static void DropHolder(rfm_TableRepr* table) {
    if (--table->m_Holders == 0) delete table;
  }

  rfm_Row NewRow();
  rfm_Row UpdateRow(int row);
  rfm_Row ReadRow(int row);
  bool RowExists(int row) const;
  // Appends the rows of other, as bytes when the layouts are the same, else
  // field by field by name; strings move through this table's pool.
  void Append(rfm_TableRepr& other);
  int CopyAllowed(rfm_TableRepr const& other) const { return m_Metadata->CopyAllowed(*other.m_Metadata); }
  rfm_FieldMetadata const& GetFieldMD(rfm_FieldHandle const& handle) const { return m_Metadata->GetFieldMD(handle); }
  rfm_MapName2FieldMetadata const& GetFieldMap() const { return m_Metadata->FieldMap(); }
  rfm_TableMetadata const& TableMetadata() const { return *m_Metadata; }
  // The field's index in the description, or -1.
  int Index(cow_String const& name) const;
  rfm_Type Type(cow_String const& name) const;
  int RowSize() const { return m_RowSize; }
  // Reserves room in the file for rows more rows.
  void Extend(int rows);
  int GetFlushCount() const { return m_TableFlushCount; }
  int Snap();
  int Flush();
  void Truncate(int rows);
  void Seek(int row) { m_Cursor = row; }
  int Location() const { return m_Cursor; }
  int Length() const { return m_RowCount; }
  rfm_Handle Handle() const { return m_Space->Handle(); }
  rfm_StringManager* StringManager() const { return m_Space->StringManager(); }
  utl_FileOffset SpaceAllocation() const { return m_Space->Allocation(); }
  utl_FileOffset SpaceLength() const { return m_Space->Length(); }
  cow_List<cow_String> GetObjStatistics() const;
  cow_String FileName() const { return m_Database.FileName(); }

  // The bulk path (see rfm_Table): rows stored in the file move in large
  // blocks straight between the file and the caller's columns; rows in the
  // cache (a writer's rows not yet written back, rows an application holds)
  // stand for their stored bytes, as they do for ReadRow.
  int ReadColumns(int first, int count, rfm_Column const* columns, int columnCount);
  void AppendColumns(int count, rfm_Column const* columns, int columnCount);

  // For rows: the layout.
  int Position(rfm_FieldHandle const& handle) const;
  // The position of the field that handle names by index when it is present
  // with data of type; -1 sends the caller the long way, through Verify, to
  // find out what is wrong.
  int PositionForType(rfm_FieldHandle const& handle, rfm_Type type) const {
    if (!handle.ByIndex() || static_cast<std::size_t>(handle.Index()) >= m_TypeByIndex.size() ||
        m_TypeByIndex[static_cast<std::size_t>(handle.Index())] != type) {
      return -1;
    }
    return m_PositionByIndex[static_cast<std::size_t>(handle.Index())];
  }
  int FieldOffset(int position) const { return m_FieldOffsets[static_cast<std::size_t>(position)]; }
  int BitmapWords() const { return m_BitmapWords; }
  rfm_TableMetadata const& Metadata() const { return *m_Metadata; }
  bool ReadOnly() const { return m_Space->ReadOnly(); }

private:
  static constexpr int kDefaultCacheRows = 32;
  // The rows a load reads at a row away from the last load, and the most
  // it reads ahead of a reader going in order.
  static constexpr int kFirstReadAhead = 4;
  static constexpr int kLongestReadAhead = 512;
  static constexpr int kFlushCountOffset = 4;
  static constexpr int kFirstRowOffset = kRfmTableHeaderSize;
  static constexpr int kHeaderWords = 3;
  // The bytes a bulk call moves in one transfer.
  static constexpr int kBulkBytes = 1 << 20;

  struct CacheEntry {
    int m_Row;
    rfm_RowRepr* m_Repr;
  };

  void Setup();
  int RowCountFromLength() const;
  utl_FileOffset RowOffset(int row) const { return kFirstRowOffset + static_cast<utl_FileOffset>(row) * m_RowSize; }
  rfm_Row FindOrLoad(int row, bool cullFirst, char const* missingText);
  void LoadCache(int row);
  void FlushOrCull(bool cull);
  void CullCache();
  // A row object for row, from the spares when there are any; cleared unless
  // its bytes are about to be read.
  rfm_RowRepr* MakeRow(int row, bool clear);
  // Drops a cached row nobody holds, keeping its memory as a spare.
  void DropRow(rfm_RowRepr* row);
  void AppendRowByRow(rfm_TableRepr& other);
  [[noreturn]] void RaiseNoFields(int line) const;
  // Rows per bulk transfer, with a block of room for them.
  int BulkRows();
  rfm_RowRepr* CachedRow(int row) const;
  // Where row is or would go in the cache.
  std::vector<CacheEntry>::iterator CacheSlot(int row);

  // Declared first, so that it goes last: the rows and the space are
  // written before the database can close.
  rfm_Database m_Database;
  int m_Holders = 0;
  rfm_TableMetadata* m_Metadata;  // owned by the catalogue
  int m_PositionCount = 0;
  int m_Cursor = 0;
  int m_RowCount = 0;
  int m_CacheRows;
  bool m_Dirty = false;
  int m_BitmapWords = 0;
  int m_RowSize = 0;
  std::vector<int> m_FieldOffsets;  // by position
  omi_Btree<cow_String, int> m_Name2Position;
  std::vector<int> m_PositionByIndex;  // -1 for a field the file's table lacks
  std::vector<rfm_Type> m_TypeByIndex;  // rfm_TypeNone for a field the file's table lacks
  std::unique_ptr<rfm_SpaceRepr> m_Space;
  rfm_IOBuffer m_Buffer;
  int m_TableFlushCount = 0;
  int m_DatabaseFlushCountSeen;
  int m_CacheBudget;
  int m_ReadAhead;
  int m_ReadAheadEnd = -1;  // the row after the last load
  int m_RowsOnDisk = 0;
  // The cached rows in ascending row order: rows are made and read ahead in
  // ascending runs, so an insertion is nearly always at the end, and a
  // lookup tries the entry after the last one found before it searches.
  std::vector<CacheEntry> m_Cache;
  mutable std::size_t m_LastFound = 0;
  std::vector<rfm_RowRepr*> m_Spares;
  // The bulk path's transfer block, kept between calls.
  std::vector<char> m_Block;
};

#endif
