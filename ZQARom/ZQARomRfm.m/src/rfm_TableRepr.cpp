#include "rfm_TableRepr.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_ChangeCount.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_DestructorFlush.h"
#include "rfm_ObjectMagic.h"
#include "rfm_StringManager.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_TableRepr";
constexpr int kBufferSize = 1024;

[[noreturn]] void Raise(int line, atr_String const& text) { nex_ThrowMessage(kSourcePath, line, text); }

[[noreturn]] void RaiseCorrupt(int line) {
  Raise(line, atr_translate("rfm_TableRepr::rfm_TableRepr: ZORBEX Database table format is corrupt. This may indicate a "
                            "corrupt database, or it may indicate that the analysis code preprocessor is still writing "
                            "the database. \n If you suspect the latter possibility, please attempt to reopen the "
                            "database when the preprocessor is complete."));
}

}  // namespace

rfm_TableRepr::rfm_TableRepr(rfm_Database const& database, rfm_TableMetadata* metadata, int quantum, int cacheRows)
    : m_Database(database), m_Metadata(metadata), m_CacheRows(cacheRows < 0 ? kDefaultCacheRows : cacheRows),
      m_Space(database.Repr().Space(quantum)), m_Buffer(m_Space.get(), kBufferSize),
      m_DatabaseFlushCountSeen(database.GetFlushCount()), m_CacheBudget(m_CacheRows), m_ReadAhead(m_CacheRows) {
  int header[kHeaderWords] = {static_cast<int>(kRfmTableMagic), 0,
                              static_cast<int>(database.GetTableMetadataHandle(metadata->TableName()))};
  m_Buffer.WriteIntArray(header, kHeaderWords);
  m_Buffer.Flush();
  Setup();
}

rfm_TableRepr::rfm_TableRepr(rfm_Database const& database, rfm_Handle const& handle, int quantum, int cacheRows)
    : m_Database(database), m_Metadata(nullptr), m_CacheRows(cacheRows < 0 ? kDefaultCacheRows : cacheRows),
      m_Space(database.Repr().Space(handle, quantum)), m_Buffer(m_Space.get(), kBufferSize),
      m_DatabaseFlushCountSeen(database.GetFlushCount()), m_CacheBudget(m_CacheRows), m_ReadAhead(m_CacheRows) {
  int header[kHeaderWords] = {};
  if (m_Buffer.Length() < kFirstRowOffset || m_Buffer.ReadIntArray(header, kHeaderWords) < kHeaderWords) {
    RaiseCorrupt(__LINE__);
  }
  if (static_cast<std::uint32_t>(header[0]) != kRfmTableMagic) {
    Raise(__LINE__, atr_translate("rfm_TableRepr::rfm_TableRepr: Handle is not to a table object. This is not a valid "
                                  "ZORBEX database."));
  }
  m_TableFlushCount = header[1];
  m_Metadata = database.Repr().BindTableMetadata(utl_FileOffset(static_cast<std::uint32_t>(header[2])));
  Setup();
  m_RowCount = m_RowsOnDisk = RowCountFromLength();
}

rfm_TableRepr::~rfm_TableRepr() {
  rfm_FlushInDestructor([this] { Flush(); });
  // No row is held: a held row would hold the table.
  for (CacheEntry const& entry : m_Cache) delete entry.m_Repr;
  for (rfm_RowRepr* spare : m_Spares) delete spare;
}

void rfm_TableRepr::Setup() {
  int stringSize = m_Space->StringManager()->ExternalStringSize();
  m_PositionCount = 0;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Metadata->FieldMap()); !it.IsDone(); it.Next()) {
    if (it.CurrentValue().Present() != 0) ++m_PositionCount;
  }
  m_BitmapWords = (m_PositionCount + 31) / 32;
  m_RowSize = 4 * m_BitmapWords;
  m_PositionByIndex.assign(static_cast<std::size_t>(m_Metadata->FieldCount()), -1);
  m_TypeByIndex.assign(static_cast<std::size_t>(m_Metadata->FieldCount()), rfm_TypeNone);
  m_FieldOffsets.clear();
  m_Name2Position.Clear();
  int position = 0;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Metadata->FieldMap()); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (field.Present() == 0) continue;
    int size = rfm_ValueSize(field.Type(), stringSize);
    if (size == 0) {
      Raise(__LINE__, atr_SubstituteFormat(atr_translate("rfm_TableRepr::Setup: An invalid field type for field '%s' "
                                                         "has been specified for table '%s'."),
                                           field.Name(), m_Metadata->TableName()));
    }
    m_FieldOffsets.push_back(m_RowSize);
    m_Name2Position.Insert(field.Name(), position);
    if (field.Index() >= 0 && field.Index() < m_Metadata->FieldCount()) {
      m_PositionByIndex[static_cast<std::size_t>(field.Index())] = position;
      m_TypeByIndex[static_cast<std::size_t>(field.Index())] = field.Type();
    }
    m_RowSize += size;
    ++position;
  }
}

int rfm_TableRepr::RowCountFromLength() const {
  utl_FileOffset rowBytes = m_Buffer.Length() - kFirstRowOffset;
  // A table without present fields has rows of 0 bytes and no rows.
  if (m_RowSize == 0 || rowBytes <= 0) return 0;
  double rows = static_cast<double>(rowBytes) / m_RowSize + 0.5;
  // Rows are numbered by int: a table claiming more is damaged.
  if (rows >= 2147483648.0) RaiseCorrupt(__LINE__);
  return static_cast<int>(rows);
}

int rfm_TableRepr::Position(rfm_FieldHandle const& handle) const {
  if (!handle.ByIndex()) return m_Name2Position.IsMember(handle.Name()) ? m_Name2Position.ConstGet(handle.Name()) : -1;
  // Bounded by the array itself, so that a field only the file has, whose
  // index lies past the program's fields, is reached by index too.
  if (static_cast<std::size_t>(handle.Index()) >= m_PositionByIndex.size()) return -1;
  return m_PositionByIndex[static_cast<std::size_t>(handle.Index())];
}

int rfm_TableRepr::Index(cow_String const& name) const { return GetFieldMD(rfm_FieldHandle(name, -1)).Index(); }

rfm_Type rfm_TableRepr::Type(cow_String const& name) const { return GetFieldMD(rfm_FieldHandle(name, -1)).Type(); }

bool rfm_TableRepr::RowExists(int row) const {
  if (row < 0) row = m_Cursor;
  return row < m_RowCount;
}

namespace {
template <class Entry>
bool RowBefore(Entry const& entry, int row) {
  return entry.m_Row < row;
}
}  // namespace

rfm_RowRepr* rfm_TableRepr::CachedRow(int row) const {
  // Sequential access finds the row right after the last one found.
  for (std::size_t guess : {m_LastFound, m_LastFound + 1}) {
    if (guess < m_Cache.size() && m_Cache[guess].m_Row == row) {
      m_LastFound = guess;
      return m_Cache[guess].m_Repr;
    }
  }
  auto found = std::lower_bound(m_Cache.begin(), m_Cache.end(), row, RowBefore<CacheEntry>);
  if (found == m_Cache.end() || found->m_Row != row) return nullptr;
  m_LastFound = static_cast<std::size_t>(found - m_Cache.begin());
  return found->m_Repr;
}

std::vector<rfm_TableRepr::CacheEntry>::iterator rfm_TableRepr::CacheSlot(int row) {
  if (m_Cache.empty() || m_Cache.back().m_Row < row) return m_Cache.end();
  return std::lower_bound(m_Cache.begin(), m_Cache.end(), row, RowBefore<CacheEntry>);
}

rfm_RowRepr* rfm_TableRepr::MakeRow(int row, bool clear) {
  if (m_Spares.empty()) return new rfm_RowRepr(new rfm_RowImpl(*this, row));
  rfm_RowRepr* spare = m_Spares.back();
  m_Spares.pop_back();
  if (clear) {
    spare->m_Impl->Reset(row);
  } else {
    spare->m_Impl->SetRowNumber(row);
    spare->m_Impl->SetDirty(false);
  }
  return spare;
}

void rfm_TableRepr::DropRow(rfm_RowRepr* row) {
  // A table keeps at most a cache's worth of spares.
  if (m_Spares.size() <= static_cast<std::size_t>(std::max(m_CacheRows, m_ReadAhead))) {
    m_Spares.push_back(row);
  } else {
    delete row;
  }
}

// Rows of no bytes could never be counted in the file.
void rfm_TableRepr::RaiseNoFields(int line) const {
  Raise(line, atr_SubstituteFormat(atr_translate("***ERROR: Table '%s' in %s has no fields: it cannot hold rows."),
                                   m_Metadata->TableName(), m_Database.FileName()));
}

rfm_Row rfm_TableRepr::NewRow() {
  if (m_RowSize == 0) RaiseNoFields(__LINE__);
  m_Dirty = true;
  if (m_CacheBudget-- <= 0) CullCache();
  rfm_RowRepr* row = MakeRow(m_RowCount, true);
  // A new row exists from now on, written or not: it reaches the file.
  row->m_Impl->SetDirty(true);
  m_Cache.insert(CacheSlot(m_RowCount), CacheEntry{m_RowCount, row});
  ++m_RowCount;
  return rfm_Row(row);
}

rfm_Row rfm_TableRepr::ReadRow(int row) {
  return FindOrLoad(row, true, "rfm_TableRepr::ReadRow - Row does not exist for table '%s', index: %d, len: %d");
}

rfm_Row rfm_TableRepr::UpdateRow(int row) {
  m_Dirty = true;
  if (row < 0) row = m_Cursor;
  if (row == m_RowCount) return NewRow();
  return FindOrLoad(row, false, "rfm_TableRepr::UpdateRow - Row does not exist for table '%s', index: %d, len: %d");
}

rfm_Row rfm_TableRepr::FindOrLoad(int row, bool cullFirst, char const* missingText) {
  if (row < 0) row = m_Cursor;
  m_Cursor = row + 1;
  rfm_RowRepr* cached = CachedRow(row);
  if (cached == nullptr) {
    // Reading culls at every miss; updating only when the budget is spent.
    if (m_CacheBudget-- <= 0 || cullFirst) CullCache();
    LoadCache(row);
    cached = CachedRow(row);
    if (cached == nullptr) {
      atr_String text = atr_SubstituteFormat(atr_translate(missingText), m_Metadata->TableName(), row, m_RowCount);
      std::fprintf(stderr, "%s\n", text.CStr());
      Raise(__LINE__, text);
    }
  }
  return rfm_Row(cached);
}

void rfm_TableRepr::LoadCache(int row) {
  if (m_CacheRows <= 0 || row < 0 || row >= m_RowCount) return;
  // Rows read in order are read ahead in growing runs, so that the cull and
  // the load before them are paid once for many rows; a row elsewhere
  // starts again with a few, since a row picked at random rarely has its
  // neighbours read next.
  m_ReadAhead = row == m_ReadAheadEnd ? std::min(2 * m_ReadAhead, std::max(kLongestReadAhead, m_CacheRows))
                                      : std::min(kFirstReadAhead, m_CacheRows);
  int budget = m_ReadAhead;
  auto slot = CacheSlot(row);
  // Rows already cached count against the read-ahead.
  while (budget > 0 && row < m_RowCount && slot != m_Cache.end() && slot->m_Row == row) {
    --budget;
    ++row;
    ++slot;
  }
  int end = std::min(m_RowCount, row + budget);
  if (slot != m_Cache.end()) end = std::min(end, slot->m_Row);
  if (row >= end) return;
  std::vector<CacheEntry> loaded;
  loaded.reserve(static_cast<std::size_t>(end - row));
  m_Buffer.Seek(RowOffset(row));
  for (; row < end; ++row) {
    rfm_RowRepr* repr = MakeRow(row, false);
    rfm_RowImpl& impl = *repr->m_Impl;
    loaded.push_back(CacheEntry{row, repr});
    int got = m_RowSize > 0 ? m_Buffer.Read(impl.Bytes(), m_RowSize) : 0;
    // A torn last row reads what there is; the rest is zero.
    if (got < m_RowSize) std::memset(impl.Bytes() + got, 0, static_cast<std::size_t>(m_RowSize - got));
    impl.Unpack();
  }
  m_Cache.insert(slot, loaded.begin(), loaded.end());
  m_ReadAheadEnd = end;
}

void rfm_TableRepr::FlushOrCull(bool cull) {
  if (!ReadOnly()) {
    std::size_t const count = m_Cache.size();
    std::size_t first = 0;  // the first cached row at or above the rows on disk
    while (first < count && m_Cache[first].m_Row < m_RowsOnDisk) ++first;
    // Above the rows on disk, everything up to the highest dirty row is
    // written, so the file's tail never has a gap.
    std::size_t end = count;
    while (end > first && !m_Cache[end - 1].m_Repr->m_Impl->Dirty()) --end;
    for (std::size_t i = 0; i < end; ++i) {
      rfm_RowImpl& impl = *m_Cache[i].m_Repr->m_Impl;
      if (i < first && !impl.Dirty()) continue;
      m_Buffer.Seek(RowOffset(impl.RowNumber()));
      impl.Pack();
      if (m_RowSize > 0) m_Buffer.Write(impl.Bytes(), m_RowSize);
      impl.SetDirty(false);
      m_RowsOnDisk = std::max(m_RowsOnDisk, impl.RowNumber() + 1);
    }
  }
  if (!cull) return;
  std::size_t kept = 0;
  for (CacheEntry const& entry : m_Cache) {
    if (entry.m_Repr->m_Uses >= 1) {
      m_Cache[kept++] = entry;
    } else {
      DropRow(entry.m_Repr);
    }
  }
  m_Cache.resize(kept);
  m_LastFound = 0;
}

void rfm_TableRepr::CullCache() {
  m_CacheBudget = m_CacheRows;
  FlushOrCull(true);
}

int rfm_TableRepr::Flush() {
  if (!m_Dirty) return m_TableFlushCount;
  if (ReadOnly()) {
    m_Dirty = false;
    return 0;
  }
  // The table counts as clean and its count as raised only once every
  // write arrived: a flush that fails (a full disk) is done again whole.
  FlushOrCull(false);
  m_Buffer.Seek(kFlushCountOffset);
  m_Buffer.WriteInt(rfm_NextCount(m_TableFlushCount));
  m_Buffer.Flush();
  m_Dirty = false;
  m_TableFlushCount = rfm_NextCount(m_TableFlushCount);
  return m_TableFlushCount;
}

int rfm_TableRepr::Snap() {
  if (!ReadOnly()) return 0;
  if (m_Database.GetFlushCount() == m_DatabaseFlushCountSeen) return 0;
  m_DatabaseFlushCountSeen = m_Database.GetFlushCount();
  // What the buffer read ahead may be stale now.
  m_Buffer.LocalFlush();
  m_Buffer.Seek(kFlushCountOffset);
  int flushCount = m_Buffer.ReadInt();
  // The table's own count is written before the linkages that admit its
  // rows, so a reader can meet it a database flush ahead of them: the rows
  // follow the view even when the count has not moved.
  int rows = std::max(m_RowCount, RowCountFromLength());
  if (flushCount == m_TableFlushCount && rows == m_RowCount) return 0;
  m_TableFlushCount = flushCount;
  FlushOrCull(true);
  m_RowCount = m_RowsOnDisk = rows;
  return m_TableFlushCount;
}

void rfm_TableRepr::Extend(int rows) {
  if (ReadOnly() || rows <= 0 || m_RowSize == 0) return;
  FlushOrCull(false);
  m_Buffer.Seek(kFirstRowOffset);
  m_Buffer.Extend(static_cast<utl_FileOffset>(rows) * m_RowSize);
}

void rfm_TableRepr::Truncate(int rows) {
  if (ReadOnly()) Raise(__LINE__, atr_translate("***ERROR: Attempt to truncate read only table."));
  if (rows < 0) rows = 0;
  m_Cursor = 0;
  auto above = std::lower_bound(m_Cache.begin(), m_Cache.end(), rows, RowBefore<CacheEntry>);
  for (auto it = above; it != m_Cache.end(); ++it) {
    if (it->m_Repr->m_Uses > 0) {
      // A detached row no longer holds the table; the caller's handle still does.
      it->m_Repr->m_Impl->Detach();
      --m_Holders;
    } else {
      DropRow(it->m_Repr);
    }
  }
  m_Cache.erase(above, m_Cache.end());
  m_LastFound = 0;
  m_RowCount = std::min(m_RowCount, rows);
  m_RowsOnDisk = std::min(m_RowsOnDisk, rows);
  m_Buffer.LocalFlush();
  m_Space->Truncate(RowOffset(m_RowsOnDisk));
  m_Buffer.Seek(RowOffset(m_RowsOnDisk));
}

void rfm_TableRepr::Append(rfm_TableRepr& other) {
  if (ReadOnly()) Raise(__LINE__, atr_translate("rfm_TableRepr::Append - Attempt to append to read only table."));
  int grade = CopyAllowed(other);
  if (grade == 0) {
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("rfm_TableRepr::Append - table being appended to \"%s\" does "
                                                       "not have compatible metadata."),
                                         m_Metadata->TableName()));
  }
  Flush();
  other.Flush();
  m_Buffer.Flush();
  other.m_Buffer.Flush();
  if (grade == 1) {
    // Same fields, no references: the rows are the same bytes.
    int added = other.m_RowCount;
    m_Buffer.Seek(RowOffset(m_RowCount));
    other.m_Buffer.Seek(kFirstRowOffset);
    m_Buffer.Append(other.m_Buffer);
    m_Buffer.Flush();
    m_RowCount += added;
    m_RowsOnDisk = m_RowCount;
    return;
  }
  AppendRowByRow(other);
}

// Field by field, matched by name. Numbers and handles move as bytes (both
// files keep one byte order); strings are read through the other table's
// pool and written through this one's, which may be another database's.
void rfm_TableRepr::AppendRowByRow(rfm_TableRepr& other) {
  struct Match {
    int from;
    int to;
    rfm_Type type;
  };
  std::vector<Match> matches;
  for (omi_BtreeIterator<cow_String, int> it(other.m_Name2Position); !it.IsDone(); it.Next()) {
    if (!m_Name2Position.IsMember(it.CurrentKey())) continue;
    rfm_Type type = other.GetFieldMD(rfm_FieldHandle(it.CurrentKey(), -1)).Type();
    if (type != rfm_TypeInt && type != rfm_TypeFloat && type != rfm_TypeDouble && type != rfm_TypeHandle &&
        type != rfm_TypeString) {
      Raise(__LINE__, atr_SubstituteFormat(atr_translate("rfm_TableRepr::Append: An invalid field type has been "
                                                         "specified for table '%s'."),
                                           m_Metadata->TableName()));
    }
    matches.push_back({it.CurrentValue(), m_Name2Position.ConstGet(it.CurrentKey()), type});
  }
  int stringSize = StringManager()->ExternalStringSize();
  for (int row = 0; row < other.m_RowCount; ++row) {
    rfm_Row source = other.ReadRow(row);
    rfm_Row target = NewRow();
    rfm_RowImpl const& from = source.Impl();
    rfm_RowImpl& to = target.Impl();
    for (Match const& match : matches) {
      if (!from.PresenceBit(match.from)) continue;
      char const* fromBytes = from.Bytes() + other.FieldOffset(match.from);
      char* toBytes = to.Bytes() + FieldOffset(match.to);
      if (match.type == rfm_TypeString) {
        cow_String text;
        other.StringManager()->Internalize(fromBytes, &text, 1);
        StringManager()->Externalize(toBytes, &text, 1);
      } else {
        std::memcpy(toBytes, fromBytes, static_cast<std::size_t>(rfm_ValueSize(match.type, stringSize)));
      }
      to.SetPresenceBit(match.to);
    }
  }
}

cow_List<cow_String> rfm_TableRepr::GetObjStatistics() const { return m_Database.GetObjStatistics(Handle()); }
