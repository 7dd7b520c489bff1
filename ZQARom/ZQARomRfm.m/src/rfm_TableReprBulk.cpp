// The bulk path of rfm_TableRepr: columns of many rows at once, beside the
// row cache and with its rules.

#include "rfm_TableRepr.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_ColumnCodec.h"
#include "rfm_Exc.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_TableReprBulk";

}  // namespace

int rfm_TableRepr::BulkRows() {
  int rows = std::max(1, kBulkBytes / m_RowSize);
  m_Block.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(m_RowSize));
  return rows;
}

int rfm_TableRepr::ReadColumns(int first, int count, rfm_Column const* columns, int columnCount) {
  if (first < 0 || count < 0) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("rfm_Table::ReadColumns - Cannot read %2$d rows from row %1$d "
                                                        "of table '%3$s' in %4$s."),
                                          first, count, m_Metadata->TableName(), m_Database.FileName()));
  }
  int const end = first + std::max(0, std::min(count, m_RowCount - first));
  rfm_ColumnCodec codec(*this, columns, columnCount, rfm_ColumnCodec::kReading, end - first);
  // A table of rows without bytes holds no rows, so end == first there too.
  if (end == first) return 0;
  int const storedEnd = std::min(end, m_RowsOnDisk);
  int const blockRows = BulkRows();
  for (int row = first; row < end;) {
    // Rows at and above those on disk are all in the cache.
    int const rows = row < storedEnd ? std::min(blockRows, storedEnd - row) : end - row;
    if (row < storedEnd) {
      std::size_t const bytes = static_cast<std::size_t>(rows) * static_cast<std::size_t>(m_RowSize);
      m_Buffer.Seek(RowOffset(row));
      int got = m_Buffer.Read(m_Block.data(), static_cast<int>(bytes));
      // A torn last row reads what there is; the rest is zero, as in LoadCache.
      if (static_cast<std::size_t>(got) < bytes) std::memset(m_Block.data() + got, 0, bytes - static_cast<std::size_t>(got));
      codec.Decode(m_Block.data(), rows, row - first);
    }
    // A cached row stands for its stored bytes, which may be older or not
    // written yet: its own bytes, with its bitmap packed into them, decode
    // over what the block gave.
    for (auto it = CacheSlot(row); it != m_Cache.end() && it->m_Row < row + rows; ++it) {
      rfm_RowImpl& impl = *it->m_Repr->m_Impl;
      impl.Pack();
      codec.Decode(impl.Bytes(), 1, it->m_Row - first);
    }
    row += rows;
  }
  m_Cursor = end;
  return end - first;
}

void rfm_TableRepr::AppendColumns(int count, rfm_Column const* columns, int columnCount) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  if (m_RowSize == 0) RaiseNoFields(__LINE__);
  if (count < 0 || count > INT_MAX - m_RowCount) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("rfm_Table::AppendColumns - Cannot append %d rows to the %d of "
                                                        "table '%s' in %s."),
                                          count, m_RowCount, m_Metadata->TableName(), m_Database.FileName()));
  }
  rfm_ColumnCodec codec(*this, columns, columnCount, rfm_ColumnCodec::kAppending, count);
  if (count == 0) return;
  // The rows made so far reach the file first, so that the new ones follow
  // them without a gap; afterwards every row is on disk.
  FlushOrCull(false);
  ZQA_ASSERT(kSourcePath, m_RowsOnDisk == m_RowCount);
  m_Dirty = true;
  int const blockRows = BulkRows();
  for (int done = 0; done < count;) {
    int const rows = std::min(blockRows, count - done);
    std::size_t const bytes = static_cast<std::size_t>(rows) * static_cast<std::size_t>(m_RowSize);
    std::memset(m_Block.data(), 0, bytes);
    codec.Encode(m_Block.data(), rows, done);
    m_Buffer.Seek(RowOffset(m_RowCount));
    m_Buffer.Write(m_Block.data(), static_cast<int>(bytes));
    // Counted once written whole: a write that fails raises above.
    m_RowCount += rows;
    m_RowsOnDisk = m_RowCount;
    done += rows;
  }
}
