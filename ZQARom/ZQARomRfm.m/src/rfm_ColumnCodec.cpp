#include "rfm_ColumnCodec.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_FieldMetadata.h"
#include "rfm_HandleConverter.h"
#include "rfm_IO.h"
#include "rfm_OffsetConverter.h"
#include "rfm_StringManager.h"
#include "rfm_TableRepr.h"

#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_ColumnCodec";

rfm_Type FieldType(rfm_Column::Kind kind) {
  switch (kind) {
    case rfm_Column::kInt:
      return rfm_TypeInt;
    case rfm_Column::kFloat:
      return rfm_TypeFloat;
    case rfm_Column::kDouble:
      return rfm_TypeDouble;
    case rfm_Column::kHandle:
      return rfm_TypeHandle;
    case rfm_Column::kString:
    case rfm_Column::kStringOffset:
      return rfm_TypeString;
  }
  return rfm_TypeNone;
}

std::uint32_t LoadWord(omi_Swapper order, char const* at) {
  std::uint32_t word;
  std::memcpy(&word, at, sizeof word);
  return order.Swap() ? omi_SwapperGuts::Swap32(word) : word;
}

template <class T>
T Load(omi_Swapper order, char const* at) {
  T value;
  if (order.Swap()) {
    omi_SwapperGuts::InternalizeArray(&value, at, 1, sizeof value);
  } else {
    std::memcpy(&value, at, sizeof value);
  }
  return value;
}

template <class T>
void Store(omi_Swapper order, char* at, T value) {
  if (order.Swap()) {
    omi_SwapperGuts::ExternalizeArray(at, &value, 1, sizeof value);
  } else {
    std::memcpy(at, &value, sizeof value);
  }
}

}  // namespace

rfm_ColumnCodec::rfm_ColumnCodec(rfm_TableRepr& table, rfm_Column const* columns, int count, Direction direction,
                                 int rows)
    : m_Table(table), m_Strings(*table.StringManager()), m_Order(rfm_FileOrder()), m_RowSize(table.RowSize()) {
  auto raise = [&](int line, char const* text, rfm_Column const& column) {
    rfm_FieldHandle const& handle = column.Field();
    rfm_FieldMetadata const& field = table.GetFieldMD(handle);
    cow_String name = !handle.ByIndex()                 ? handle.Name()
                      : field.Type() != rfm_TypeNone ? field.Name()
                                                      : cow_String("#").Append(cow_String(handle.Index()));
    nex_ThrowMessage(kSourcePath, line,
                     atr_SubstituteFormat(atr_translate(text), name, table.TableMetadata().TableName(),
                                          table.FileName()));
  };
  if (count < 0 || (count > 0 && columns == nullptr)) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("rfm_Table - A bulk call on table '%s' in %s names %d "
                                                        "columns without giving them."),
                                          table.TableMetadata().TableName(), table.FileName(), count));
  }
  m_Columns.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    rfm_Column const& column = columns[i];
    rfm_Type const type = table.GetFieldMD(column.Field()).Type();
    if (type == rfm_TypeNone) raise(__LINE__, "rfm_Table - Table '%2$s' in %3$s has no field '%1$s'.", column);
    if (type != FieldType(column.GetKind())) {
      raise(__LINE__, "rfm_Table - Field '%s' of table '%s' in %s holds values of another type than its column's.",
            column);
    }
    if (direction == kReading && column.Target() == nullptr && (rows > 0 || column.Source() != nullptr)) {
      raise(__LINE__, "rfm_Table::ReadColumns - The column of field '%s' of table '%s' in %s has no array to read into.",
            column);
    }
    if (direction == kAppending && column.Source() == nullptr && (rows > 0 || column.GetKind() == rfm_Column::kStringOffset)) {
      raise(__LINE__, "rfm_Table::AppendColumns - The column of field '%s' of table '%s' in %s gives no values: strings "
                      "are appended as text.",
            column);
    }
    int position = table.Position(column.Field());
    if (direction == kAppending && position < 0) {
      raise(__LINE__, "rfm_Table::AppendColumns - Field '%s' of table '%s' in %s is not stored in the file's table.",
            column);
    }
    if (column.GetKind() == rfm_Column::kString && direction == kReading && m_Recent.empty()) {
      std::size_t size = 16;
      while (size < kMostRecentStrings && size < static_cast<std::size_t>(rows)) size *= 2;
      m_Recent.resize(size);
    }
    Bound bound{column.GetKind(), -1, 0, 0, &column};
    if (position >= 0) {
      bound.m_Offset = table.FieldOffset(position);
      bound.m_WordOffset = 4 * (position / 32);
      bound.m_Bit = 1u << (position % 32);
    }
    m_Columns.push_back(bound);
  }
}

bool rfm_ColumnCodec::Present(char const* row, Bound const& column) const {
  return (LoadWord(m_Order, row + column.m_WordOffset) & column.m_Bit) != 0;
}

void rfm_ColumnCodec::MarkPresent(char* row, Bound const& column) const {
  std::uint32_t word = LoadWord(m_Order, row + column.m_WordOffset) | column.m_Bit;
  rfm_IntConverter::Externalize(m_Order, row + column.m_WordOffset, static_cast<std::int32_t>(word));
}

void rfm_ColumnCodec::Decode(char const* bytes, int rows, int first) {
  for (Bound const& column : m_Columns) {
    if (column.m_Offset < 0) {
      DecodeAbsent(column, rows, first);
      continue;
    }
    switch (column.m_Kind) {
      case rfm_Column::kInt:
        DecodeNumbers<int>(column, bytes, rows, first);
        break;
      case rfm_Column::kFloat:
        DecodeNumbers<float>(column, bytes, rows, first);
        break;
      case rfm_Column::kDouble:
        DecodeNumbers<double>(column, bytes, rows, first);
        break;
      case rfm_Column::kHandle: {
        auto* out = static_cast<rfm_Handle*>(column.m_Column->Target()) + first;
        unsigned char* present = column.m_Column->Present();
        for (int r = 0; r < rows; ++r) {
          char const* row = bytes + static_cast<std::size_t>(r) * static_cast<std::size_t>(m_RowSize);
          bool has = Present(row, column);
          if (present != nullptr) present[first + r] = has ? 1 : 0;
          out[r] = has ? rfm_HandleConverter::Internalize(m_Order, row + column.m_Offset) : rfm_Handle();
        }
        break;
      }
      case rfm_Column::kString:
      case rfm_Column::kStringOffset:
        DecodeStrings(column, bytes, rows, first);
        break;
    }
  }
}

template <class T>
void rfm_ColumnCodec::DecodeNumbers(Bound const& column, char const* bytes, int rows, int first) {
  T* out = static_cast<T*>(column.m_Column->Target()) + first;
  unsigned char* present = column.m_Column->Present();
  T const fill = static_cast<T>(column.m_Column->NumberFill());
  // The field's bytes are there whether or not it holds data, so each row
  // loads them and picks: no branch in the loop.
  char const* row = bytes;
  if (present == nullptr) {
    for (int r = 0; r < rows; ++r, row += m_RowSize) {
      T value = Load<T>(m_Order, row + column.m_Offset);
      out[r] = Present(row, column) ? value : fill;
    }
    return;
  }
  present += first;
  for (int r = 0; r < rows; ++r, row += m_RowSize) {
    bool has = Present(row, column);
    T value = Load<T>(m_Order, row + column.m_Offset);
    present[r] = has ? 1 : 0;
    out[r] = has ? value : fill;
  }
}

void rfm_ColumnCodec::DecodeStrings(Bound const& column, char const* bytes, int rows, int first) {
  unsigned char* present = column.m_Column->Present();
  char const* row = bytes;
  if (column.m_Kind == rfm_Column::kStringOffset) {
    auto* out = static_cast<utl_FileOffset*>(column.m_Column->Target()) + first;
    for (int r = 0; r < rows; ++r, row += m_RowSize) {
      bool has = Present(row, column);
      if (present != nullptr) present[first + r] = has ? 1 : 0;
      out[r] = has ? rfm_OffsetConverter::Internalize(m_Order, row + column.m_Offset) : 0;
    }
    return;
  }
  auto* out = static_cast<cow_String*>(column.m_Column->Target()) + first;
  cow_String const& fill = column.m_Column->StringFill();
  for (int r = 0; r < rows; ++r, row += m_RowSize) {
    bool has = Present(row, column);
    if (present != nullptr) present[first + r] = has ? 1 : 0;
    out[r] = has ? Text(row + column.m_Offset) : fill;
  }
}

void rfm_ColumnCodec::DecodeAbsent(Bound const& column, int rows, int first) {
  rfm_Column const& target = *column.m_Column;
  if (target.Present() != nullptr) std::memset(target.Present() + first, 0, static_cast<std::size_t>(rows));
  for (int r = first; r < first + rows; ++r) {
    switch (column.m_Kind) {
      case rfm_Column::kInt:
        static_cast<int*>(target.Target())[r] = static_cast<int>(target.NumberFill());
        break;
      case rfm_Column::kFloat:
        static_cast<float*>(target.Target())[r] = static_cast<float>(target.NumberFill());
        break;
      case rfm_Column::kDouble:
        static_cast<double*>(target.Target())[r] = target.NumberFill();
        break;
      case rfm_Column::kHandle:
        static_cast<rfm_Handle*>(target.Target())[r] = rfm_Handle();
        break;
      case rfm_Column::kString:
        static_cast<cow_String*>(target.Target())[r] = target.StringFill();
        break;
      case rfm_Column::kStringOffset:
        static_cast<utl_FileOffset*>(target.Target())[r] = 0;
        break;
    }
  }
}

cow_String const& rfm_ColumnCodec::Text(char const* external) {
  std::uint64_t stored;
  std::memcpy(&stored, external, sizeof stored);
  // Offsets are small doubles: their bits differ high up, which the
  // multiplication carries to the top bits that pick the entry.
  std::size_t slot = static_cast<std::size_t>((stored * 0x9E3779B97F4A7C15ull) >> 40) & (m_Recent.size() - 1);
  Recent& recent = m_Recent[slot];
  if (recent.m_Stored != stored || stored == 0) {
    m_Strings.Internalize(external, &recent.m_Text, 1);
    recent.m_Stored = stored;
  }
  return recent.m_Text;
}

void rfm_ColumnCodec::Encode(char* bytes, int rows, int first) {
  // The bits of the columns that hold data in every row go into each row's
  // bitmap at once; the others, row by row as their presence arrays say.
  std::vector<std::uint32_t> always(static_cast<std::size_t>(m_Table.BitmapWords()), 0);
  for (Bound const& column : m_Columns) {
    if (column.m_Column->PresentSource() == nullptr) always[static_cast<std::size_t>(column.m_WordOffset / 4)] |= column.m_Bit;
  }
  char* row = bytes;
  for (int r = 0; r < rows; ++r, row += m_RowSize) {
    for (std::size_t w = 0; w < always.size(); ++w) {
      if (always[w] != 0) rfm_IntConverter::Externalize(m_Order, row + 4 * w, static_cast<std::int32_t>(always[w]));
    }
  }
  for (Bound const& column : m_Columns) {
    switch (column.m_Kind) {
      case rfm_Column::kInt:
        EncodeNumbers<int>(column, bytes, rows, first);
        break;
      case rfm_Column::kFloat:
        EncodeNumbers<float>(column, bytes, rows, first);
        break;
      case rfm_Column::kDouble:
        EncodeNumbers<double>(column, bytes, rows, first);
        break;
      case rfm_Column::kHandle: {
        auto const* in = static_cast<rfm_Handle const*>(column.m_Column->Source()) + first;
        unsigned char const* present = column.m_Column->PresentSource();
        row = bytes;
        for (int r = 0; r < rows; ++r, row += m_RowSize) {
          if (present != nullptr && present[first + r] == 0) continue;
          rfm_HandleConverter::Externalize(m_Order, row + column.m_Offset, in[r]);
          if (present != nullptr) MarkPresent(row, column);
        }
        break;
      }
      case rfm_Column::kString:
        EncodeStrings(column, bytes, rows, first);
        break;
      case rfm_Column::kStringOffset:
        ZQA_ASSERT(kSourcePath, !"A column of string offsets is only read.");
    }
  }
}

template <class T>
void rfm_ColumnCodec::EncodeNumbers(Bound const& column, char* bytes, int rows, int first) {
  T const* in = static_cast<T const*>(column.m_Column->Source()) + first;
  unsigned char const* present = column.m_Column->PresentSource();
  char* row = bytes;
  if (present == nullptr) {
    for (int r = 0; r < rows; ++r, row += m_RowSize) Store<T>(m_Order, row + column.m_Offset, in[r]);
    return;
  }
  for (int r = 0; r < rows; ++r, row += m_RowSize) {
    if (present[first + r] == 0) continue;
    Store<T>(m_Order, row + column.m_Offset, in[r]);
    MarkPresent(row, column);
  }
}

void rfm_ColumnCodec::EncodeStrings(Bound const& column, char* bytes, int rows, int first) {
  cow_String const* in = static_cast<cow_String const*>(column.m_Column->Source()) + first;
  unsigned char const* present = column.m_Column->PresentSource();
  char* row = bytes;
  for (int r = 0; r < rows; ++r, row += m_RowSize) {
    if (present != nullptr && present[first + r] == 0) continue;
    m_Strings.Externalize(row + column.m_Offset, in + r, 1);
    if (present != nullptr) MarkPresent(row, column);
  }
}
