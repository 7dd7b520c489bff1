#include "rfm_TableRepr.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_HandleConverter.h"
#include "rfm_ObjectMagic.h"
#include "rfm_StringManager.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_TableRepr";
constexpr int kBufferSize = 1024;

[[noreturn]] void Raise(int line, atr_String const& text) { nex_ThrowMessage(kSourcePath, line, text); }

// Bytes a field of type takes in a row, 0 for a type no field can have.
int FieldSize(rfm_Type type, int externalStringSize) {
  switch (type) {
    case rfm_TypeInt:
    case rfm_TypeFloat:
      return 4;
    case rfm_TypeDouble:
      return 8;
    case rfm_TypeHandle:
      return rfm_HandleConverter::ExternalSize();
    case rfm_TypeString:
      return externalStringSize;
    default:
      return 0;
  }
}

}  // namespace

rfm_TableRepr::rfm_TableRepr(rfm_DatabaseRepr& database, rfm_TableMetadata* metadata, int quantum, int cacheRows)
    : m_Database(&database), m_Metadata(metadata), m_CacheRows(cacheRows < 0 ? kDefaultCacheRows : cacheRows),
      m_Space(database.Space(quantum)), m_Buffer(m_Space.get(), kBufferSize),
      m_DatabaseFlushCountSeen(database.GetFlushCount()), m_CacheBudget(m_CacheRows) {
  int header[kHeaderWords] = {static_cast<int>(kRfmTableMagic), 0,
                              static_cast<int>(database.GetTableMetadataHandle(metadata->TableName()))};
  m_Buffer.WriteIntArray(header, kHeaderWords);
  m_Buffer.Flush();
  Setup();
}

rfm_TableRepr::rfm_TableRepr(rfm_DatabaseRepr& database, rfm_Handle const& handle, int quantum, int cacheRows)
    : m_Database(&database), m_Metadata(nullptr), m_CacheRows(cacheRows < 0 ? kDefaultCacheRows : cacheRows),
      m_Space(database.Space(handle, quantum)), m_Buffer(m_Space.get(), kBufferSize),
      m_DatabaseFlushCountSeen(database.GetFlushCount()), m_CacheBudget(m_CacheRows) {
  int header[kHeaderWords] = {};
  if (m_Buffer.Length() < kFirstRowOffset || m_Buffer.ReadIntArray(header, kHeaderWords) < kHeaderWords) {
    Raise(__LINE__,
          atr_translate("rfm_TableRepr::rfm_TableRepr: ZORBEX Database table format is corrupt. This may indicate a "
                        "corrupt database, or it may indicate that the analysis code preprocessor is still writing "
                        "the database. \n If you suspect the latter possibility, please attempt to reopen the "
                        "database when the preprocessor is complete."));
  }
  if (static_cast<std::uint32_t>(header[0]) != kRfmTableMagic) {
    Raise(__LINE__, atr_translate("rfm_TableRepr::rfm_TableRepr: Handle is not to a table object. This is not a valid "
                                  "ZORBEX database."));
  }
  m_TableFlushCount = header[1];
  m_Metadata = database.BindTableMetadata(utl_FileOffset(static_cast<std::uint32_t>(header[2])));
  Setup();
  m_RowCount = m_RowsOnDisk = RowCountFromLength();
}

rfm_TableRepr::~rfm_TableRepr() {
  try {
    Flush();
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
  }
  // Rows that an application still holds outlive the table, detached.
  for (omi_BtreeIterator<int, rfm_RowRepr*> it(m_Cache); !it.IsDone(); it.Next()) {
    rfm_RowRepr* row = it.CurrentValue();
    if (row->m_Uses > 0) {
      row->m_Impl->Detach();
    } else {
      delete row;
    }
  }
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
  m_FieldOffsets.clear();
  m_Name2Position.Clear();
  int position = 0;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Metadata->FieldMap()); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (field.Present() == 0) continue;
    int size = FieldSize(field.Type(), stringSize);
    if (size == 0) {
      Raise(__LINE__, atr_SubstituteFormat(atr_translate("rfm_TableRepr::Setup: An invalid field type for field '%s' "
                                                         "has been specified for table '%s'."),
                                           field.Name(), m_Metadata->TableName()));
    }
    m_FieldOffsets.push_back(m_RowSize);
    m_Name2Position.Insert(field.Name(), position);
    if (field.Index() >= 0 && field.Index() < m_Metadata->FieldCount()) {
      m_PositionByIndex[static_cast<std::size_t>(field.Index())] = position;
    }
    m_RowSize += size;
    ++position;
  }
}

int rfm_TableRepr::RowCountFromLength() const {
  utl_FileOffset rowBytes = m_Buffer.Length() - kFirstRowOffset;
  // A table without present fields has rows of 0 bytes and no rows.
  if (m_RowSize == 0 || rowBytes <= 0) return 0;
  return static_cast<int>(static_cast<double>(rowBytes) / m_RowSize + 0.5);
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

rfm_RowRepr* rfm_TableRepr::MakeRow(int row) {
  if (m_Spares.empty()) return new rfm_RowRepr(new rfm_RowImpl(*this, row));
  rfm_RowRepr* spare = m_Spares.back();
  m_Spares.pop_back();
  spare->m_Impl->Reset(row);
  return spare;
}

void rfm_TableRepr::DropRow(rfm_RowRepr* row) {
  // A table keeps at most a cache's worth of spares.
  if (static_cast<int>(m_Spares.size()) < std::max(m_CacheRows, 1)) {
    m_Spares.push_back(row);
  } else {
    delete row;
  }
}

rfm_Row rfm_TableRepr::NewRow() {
  m_Dirty = true;
  if (m_CacheBudget-- <= 0) CullCache();
  rfm_RowRepr* row = MakeRow(m_RowCount);
  // A new row exists from now on, written or not: it reaches the file.
  row->m_Impl->SetDirty(true);
  ++m_RowCount;
  m_Cache.Insert(row->m_Impl->RowNumber(), row);
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
  if (!m_Cache.IsMember(row)) {
    // Reading culls at every miss; updating only when the budget is spent.
    if (m_CacheBudget-- <= 0 || cullFirst) CullCache();
    LoadCache(row);
    if (!m_Cache.IsMember(row)) {
      atr_String text = atr_SubstituteFormat(atr_translate(missingText), m_Metadata->TableName(), row, m_RowCount);
      std::fprintf(stderr, "%s\n", text.CStr());
      Raise(__LINE__, text);
    }
  }
  return rfm_Row(m_Cache.ConstGet(row));
}

void rfm_TableRepr::LoadCache(int row) {
  int budget = m_CacheRows;
  if (budget <= 0 || row < 0 || row >= m_RowCount) return;
  while (budget > 0 && row < m_RowCount && m_Cache.IsMember(row)) {
    --budget;
    ++row;
  }
  if (budget <= 0 || row >= m_RowCount) return;
  m_Buffer.Seek(RowOffset(row));
  for (; budget > 0 && row < m_RowCount && !m_Cache.IsMember(row); --budget, ++row) {
    rfm_RowRepr* loaded = MakeRow(row);
    rfm_RowImpl& impl = *loaded->m_Impl;
    if (m_RowSize > 0) {
      // A torn last row reads what there is; the rest stays zero.
      m_Buffer.Read(impl.Bytes(), m_RowSize);
    }
    impl.Unpack();
    m_Cache.Insert(row, loaded);
  }
}

void rfm_TableRepr::FlushOrCull(bool cull) {
  std::vector<rfm_RowRepr*> rows;
  rows.reserve(static_cast<std::size_t>(m_Cache.Size()));
  for (omi_BtreeIterator<int, rfm_RowRepr*> it(m_Cache); !it.IsDone(); it.Next()) rows.push_back(it.CurrentValue());
  std::vector<char> mustWrite(rows.size(), 0);
  if (!ReadOnly()) {
    std::size_t i = 0;
    for (; i < rows.size() && rows[i]->m_Impl->RowNumber() < m_RowsOnDisk; ++i) {
      if (rows[i]->m_Impl->Dirty()) mustWrite[i] = 1;
    }
    // Above the rows on disk, everything up to the highest dirty row is
    // written, so the file's tail never has a gap.
    std::size_t highest = rows.size();
    for (std::size_t j = rows.size(); j > i; --j) {
      if (rows[j - 1]->m_Impl->Dirty()) {
        highest = j - 1;
        break;
      }
    }
    if (highest < rows.size()) {
      for (std::size_t j = i; j <= highest; ++j) mustWrite[j] = 1;
    }
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!mustWrite[i]) continue;
    rfm_RowImpl& impl = *rows[i]->m_Impl;
    m_Buffer.Seek(RowOffset(impl.RowNumber()));
    impl.Pack();
    if (m_RowSize > 0) m_Buffer.Write(impl.Bytes(), m_RowSize);
    impl.SetDirty(false);
    m_RowsOnDisk = std::max(m_RowsOnDisk, impl.RowNumber() + 1);
  }
  if (!cull) return;
  for (rfm_RowRepr* row : rows) {
    if (row->m_Uses >= 1) continue;
    m_Cache.Remove(row->m_Impl->RowNumber());
    DropRow(row);
  }
}

void rfm_TableRepr::CullCache() {
  m_CacheBudget = m_CacheRows;
  FlushOrCull(true);
}

int rfm_TableRepr::Flush() {
  if (!m_Dirty) return m_TableFlushCount;
  m_Dirty = false;
  if (ReadOnly()) return 0;
  FlushOrCull(false);
  ++m_TableFlushCount;
  m_Buffer.Seek(kFlushCountOffset);
  m_Buffer.WriteInt(m_TableFlushCount);
  m_Buffer.Flush();
  return m_TableFlushCount;
}

int rfm_TableRepr::Snap() {
  if (!ReadOnly()) return 0;
  if (m_Database->GetFlushCount() == m_DatabaseFlushCountSeen) return 0;
  m_DatabaseFlushCountSeen = m_Database->GetFlushCount();
  // What the buffer read ahead may be stale now.
  m_Buffer.LocalFlush();
  m_Buffer.Seek(kFlushCountOffset);
  int flushCount = m_Buffer.ReadInt();
  if (flushCount == m_TableFlushCount) return 0;
  m_TableFlushCount = flushCount;
  FlushOrCull(true);
  m_RowCount = std::max(m_RowCount, RowCountFromLength());
  m_RowsOnDisk = m_RowCount;
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
  std::vector<rfm_RowRepr*> above;
  for (omi_BtreeIterator<int, rfm_RowRepr*> it(m_Cache); !it.IsDone(); it.Next()) {
    if (it.CurrentKey() >= rows) above.push_back(it.CurrentValue());
  }
  for (rfm_RowRepr* row : above) {
    m_Cache.Remove(row->m_Impl->RowNumber());
    if (row->m_Uses > 0) {
      row->m_Impl->Detach();
    } else {
      DropRow(row);
    }
  }
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
        std::memcpy(toBytes, fromBytes, static_cast<std::size_t>(FieldSize(match.type, stringSize)));
      }
      to.SetPresenceBit(match.to);
    }
  }
}

cow_List<cow_String> rfm_TableRepr::GetObjStatistics() const { return m_Database->GetObjStatistics(Handle()); }
