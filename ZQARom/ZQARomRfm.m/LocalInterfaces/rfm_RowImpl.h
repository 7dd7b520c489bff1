#ifndef rfm_RowImpl_h
#define rfm_RowImpl_h

#include "cow_String.h"
#include "mem_Alloc.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"
#include "rfm_TableMetadata.h"
#include "rfm_Type.h"

#include <cstdint>
#include <memory>

class rfm_TableRepr;

// One row of a table in memory: its bytes as stored (the file's byte order)
// and its presence bitmap in host order. A field's bytes are read and
// written straight at the field's offset; the bitmap reaches the row's head
// when the row is packed for writing.
//
//  row layout   size
//  bitmap       4 per 32 positions; bit p % 32 of word p / 32 set when the field at position p has data
//  fields       at each field's offset, in position order
//
// Invariant: m_Bytes holds the table's row size; bitmap words beyond the
// last position stay clear.
class rfm_RowImpl : public mem_AllocationOperators {
public:
  rfm_RowImpl(rfm_TableRepr& table, int rowNumber);

  bool FieldIsPresent(rfm_FieldHandle const& handle) const;
  bool DataIsPresent(rfm_FieldHandle const& handle) const;
  int ReadFieldInt(rfm_FieldHandle const& handle) const;
  float ReadFieldFloat(rfm_FieldHandle const& handle) const;
  double ReadFieldDouble(rfm_FieldHandle const& handle) const;
  rfm_Handle ReadFieldHandle(rfm_FieldHandle const& handle) const;
  cow_String ReadFieldString(rfm_FieldHandle const& handle) const;
  void WriteFieldInt(rfm_FieldHandle const& handle, int value);
  void WriteFieldFloat(rfm_FieldHandle const& handle, float value);
  void WriteFieldDouble(rfm_FieldHandle const& handle, double value);
  void WriteFieldHandle(rfm_FieldHandle const& handle, rfm_Handle const& value);
  void WriteFieldString(rfm_FieldHandle const& handle, cow_String const& value);
  // Overwrites the pooled characters of the field's string in place.
  void NeuterFieldString(rfm_FieldHandle const& handle, cow_String const& replacement);
  void Erase();
  void Erase(rfm_FieldHandle const& handle);
  // Copies one field's value from source, a row of any table.
  void CopyField(rfm_RowImpl const& source, rfm_FieldHandle const& handle);
  int Location() const { return m_RowNumber; }
  rfm_MapName2FieldMetadata const& FieldMetadataMap() const;

  // For the table: the row's bytes, its number, its state.
  // The bitmap to and from the row's head, in the file's byte order.
  void Pack() {
    omi_Swapper order = rfm_FileOrder();
    for (int i = 0; i < m_WordCount; ++i) {
      rfm_IntConverter::Externalize(order, m_Bytes.get() + 4 * i, static_cast<std::int32_t>(m_Presence[static_cast<std::size_t>(i)]));
    }
  }
  void Unpack() {
    omi_Swapper order = rfm_FileOrder();
    for (int i = 0; i < m_WordCount; ++i) {
      m_Presence[static_cast<std::size_t>(i)] = static_cast<std::uint32_t>(rfm_IntConverter::Internalize(order, m_Bytes.get() + 4 * i));
    }
  }
  char* Bytes() { return m_Bytes.get(); }
  char const* Bytes() const { return m_Bytes.get(); }
  int RowNumber() const { return m_RowNumber; }
  void SetRowNumber(int rowNumber) { m_RowNumber = rowNumber; }
  bool Dirty() const { return m_Dirty != 0; }
  void SetDirty(bool dirty) { m_Dirty = dirty ? 1 : 0; }
  rfm_TableRepr* Table() const { return m_Table; }
  void Detach() { m_Table = nullptr; }
  // Clears bytes and bitmap, for reuse as row rowNumber.
  void Reset(int rowNumber);
  bool PresenceBit(int position) const {
    return (m_Presence[static_cast<std::size_t>(position) / 32] >> (position % 32)) & 1u;
  }
  void SetPresenceBit(int position) { m_Presence[static_cast<std::size_t>(position) / 32] |= 1u << (position % 32); }

private:
  // The position of a field that may be read: verified, present, with data.
  int PrepReadField(rfm_FieldHandle const& handle, rfm_Type type) const;
  // The position of a field that may be written: verified and present.
  int PrepWriteField(rfm_FieldHandle const& handle, rfm_Type type);
  __attribute__((noinline)) int PrepReadFieldSlowly(rfm_FieldHandle const& handle, rfm_Type type) const;
  __attribute__((noinline)) int PrepWriteFieldSlowly(rfm_FieldHandle const& handle, rfm_Type type) const;
  // A row outlives its table only in an application's hands; using it then
  // is a programming error.
  rfm_TableRepr& TableRef() const {
    if (m_Table == nullptr) RaiseDetached();
    return *m_Table;
  }
  [[noreturn]] static void RaiseDetached();
  cow_String FieldName(rfm_FieldHandle const& handle) const;
  template <class T>
  T ReadNumber(rfm_FieldHandle const& handle, rfm_Type type) const;
  template <class T>
  void WriteNumber(rfm_FieldHandle const& handle, rfm_Type type, T value);

  rfm_TableRepr* m_Table;
  std::unique_ptr<std::uint32_t[]> m_Presence;
  int m_WordCount;
  std::unique_ptr<char[]> m_Bytes;
  int m_Size;
  int m_RowNumber;
  int m_Dirty = 0;
};

// The shared holder of one cached row: the rows that an application holds
// count here, and a held row survives the cache's culls. A row whose table
// has gone is detached and only waits for its last holder.
struct rfm_RowRepr : mem_AllocationOperators {
  explicit rfm_RowRepr(rfm_RowImpl* impl) : m_Impl(impl) {}
  ~rfm_RowRepr() { delete m_Impl; }
  rfm_RowRepr(rfm_RowRepr const&) = delete;
  rfm_RowRepr& operator=(rfm_RowRepr const&) = delete;

  int m_Uses = 0;
  rfm_RowImpl* m_Impl;
};

#endif
