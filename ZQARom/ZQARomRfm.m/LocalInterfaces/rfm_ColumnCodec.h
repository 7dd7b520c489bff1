#ifndef rfm_ColumnCodec_h
#define rfm_ColumnCodec_h

#include "omi_Swapper.h"
#include "rfm_Column.h"
#include "utl_FileOffset.h"

#include <array>
#include <cstdint>
#include <vector>

class rfm_StringManager;
class rfm_TableRepr;

// Moves the columns of one bulk call between the caller's arrays and rows
// as stored (bitmap words, then the fields at their offsets, in the file's
// byte order; see rfm_RowImpl): decoding rows read from the file, encoding
// rows to append. Each column's field is found and its type checked once,
// when the codec is made, so the loops over rows do no lookups.
class rfm_ColumnCodec {
public:
  enum Direction { kReading, kAppending };

  // Raises, naming the table and its file, for a column that does not fit
  // its field or the direction.
  rfm_ColumnCodec(rfm_TableRepr& table, rfm_Column const* columns, int count, Direction direction);

  // Decodes rows stored back to back at bytes into elements first to
  // first + rows - 1 of every column.
  void Decode(char const* bytes, int rows, int first);
  // Encodes elements first to first + rows - 1 of every column into rows
  // back to back at bytes, which the caller has zeroed.
  void Encode(char* bytes, int rows, int first);

private:
  struct Bound {
    rfm_Column::Kind m_Kind;
    int m_Offset;                     // of the field in the row; -1 when the table lacks it
    int m_WordOffset;                 // of its bitmap word in the row
    std::uint32_t m_Bit;              // its bit in that word, in host order
    rfm_Column const* m_Column;
  };
  struct Recent {
    utl_FileOffset m_Offset = 0;
    cow_String m_Text;
  };
  static constexpr int kRecentStrings = 256;

  template <class T>
  void DecodeNumbers(Bound const& column, char const* bytes, int rows, int first);
  void DecodeStrings(Bound const& column, char const* bytes, int rows, int first);
  void DecodeAbsent(Bound const& column, int rows, int first);
  template <class T>
  void EncodeNumbers(Bound const& column, char* bytes, int rows, int first);
  void EncodeStrings(Bound const& column, char* bytes, int rows, int first);
  bool Present(char const* row, Bound const& column) const;
  void MarkPresent(char* row, Bound const& column) const;
  // The text of the pooled string at offset; the strings of a column
  // repeat, so the last few are kept by offset.
  cow_String const& Text(char const* external, utl_FileOffset offset);

  rfm_TableRepr& m_Table;
  rfm_StringManager& m_Strings;
  omi_Swapper m_Order;
  int m_RowSize;
  std::vector<Bound> m_Columns;
  std::array<Recent, kRecentStrings> m_Recent;
};

#endif
