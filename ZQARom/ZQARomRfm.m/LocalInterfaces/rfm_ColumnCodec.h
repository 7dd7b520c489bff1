#ifndef rfm_ColumnCodec_h
#define rfm_ColumnCodec_h

#include "omi_Swapper.h"
#include "rfm_Column.h"
#include "utl_FileOffset.h"

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
  // its field or the direction, or that has no array for rows to move.
  rfm_ColumnCodec(rfm_TableRepr& table, rfm_Column const* columns, int count, Direction direction, int rows);

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
  // A pooled string by its stored bytes; 0 is no stored offset's bytes.
  struct Recent {
    std::uint64_t m_Stored = 0;
    cow_String m_Text;
  };
  static constexpr std::size_t kMostRecentStrings = 4096;

  template <class T>
  void DecodeNumbers(Bound const& column, char const* bytes, int rows, int first);
  void DecodeStrings(Bound const& column, char const* bytes, int rows, int first);
  void DecodeAbsent(Bound const& column, int rows, int first);
  template <class T>
  void EncodeNumbers(Bound const& column, char* bytes, int rows, int first);
  void EncodeStrings(Bound const& column, char* bytes, int rows, int first);
  bool Present(char const* row, Bound const& column) const;
  void MarkPresent(char* row, Bound const& column) const;
  // The text of the pooled string whose stored offset is at external; the
  // strings of a column repeat, so the last ones are kept by those bytes.
  cow_String const& Text(char const* external);

  rfm_TableRepr& m_Table;
  rfm_StringManager& m_Strings;
  omi_Swapper m_Order;
  int m_RowSize;
  std::vector<Bound> m_Columns;
  // Sized to the call, once a column asks for text: a few rows need few.
  std::vector<Recent> m_Recent;
};

#endif
