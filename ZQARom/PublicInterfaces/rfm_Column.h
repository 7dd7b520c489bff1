#ifndef rfm_Column_h
#define rfm_Column_h

#include "cow_String.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "utl_FileOffset.h"

// One field over many rows, in the caller's memory: the target of a bulk
// read (rfm_Table::ReadColumns) and the source of a bulk append
// (rfm_Table::AppendColumns). The caller owns the arrays; each holds at
// least one element for every row of the call. A column is a description
// only, cheap to copy.
//
// Reading: a row whose field holds no data (or whose table lacks the field)
// gets the column's fill value, and 0 in the presence array when one is
// given (1 when the field holds data). Strings come back as text, or as the
// offsets of their records in the file's string pool (0 for no data), which
// compare equal exactly when the strings do.
//
// Appending: every row's field holds data unless a presence array is given
// and says 0 for that row; a field no column names holds no data.
class ZQA_EXPORT rfm_Column {
public:
  enum Kind { kInt, kFloat, kDouble, kHandle, kString, kStringOffset };

  static rfm_Column Ints(rfm_FieldHandle const& field, int* values, int fill = 0) {
    return rfm_Column(field, kInt, values, values, fill);
  }
  static rfm_Column Floats(rfm_FieldHandle const& field, float* values, float fill = 0) {
    return rfm_Column(field, kFloat, values, values, fill);
  }
  static rfm_Column Doubles(rfm_FieldHandle const& field, double* values, double fill = 0) {
    return rfm_Column(field, kDouble, values, values, fill);
  }
  // Absent fields read as the null handle.
  static rfm_Column Handles(rfm_FieldHandle const& field, rfm_Handle* values) {
    return rfm_Column(field, kHandle, values, values, 0);
  }
  static rfm_Column Strings(rfm_FieldHandle const& field, cow_String* values, cow_String const& fill = cow_String()) {
    rfm_Column column(field, kString, values, values, 0);
    column.m_StringFill = fill;
    return column;
  }
  // For reading only.
  static rfm_Column StringOffsets(rfm_FieldHandle const& field, utl_FileOffset* values) {
    return rfm_Column(field, kStringOffset, values, nullptr, 0);
  }

  // For appending, from the caller's constant arrays.
  static rfm_Column Ints(rfm_FieldHandle const& field, int const* values) {
    return rfm_Column(field, kInt, nullptr, values, 0);
  }
  static rfm_Column Floats(rfm_FieldHandle const& field, float const* values) {
    return rfm_Column(field, kFloat, nullptr, values, 0);
  }
  static rfm_Column Doubles(rfm_FieldHandle const& field, double const* values) {
    return rfm_Column(field, kDouble, nullptr, values, 0);
  }
  static rfm_Column Handles(rfm_FieldHandle const& field, rfm_Handle const* values) {
    return rfm_Column(field, kHandle, nullptr, values, 0);
  }
  static rfm_Column Strings(rfm_FieldHandle const& field, cow_String const* values) {
    return rfm_Column(field, kString, nullptr, values, 0);
  }

  // Reading fills present; appending reads it.
  rfm_Column& Presence(unsigned char* present) {
    m_Present = present;
    m_PresentSource = present;
    return *this;
  }
  rfm_Column& Presence(unsigned char const* present) {
    m_Present = nullptr;
    m_PresentSource = present;
    return *this;
  }

  rfm_FieldHandle const& Field() const { return m_Field; }
  Kind GetKind() const { return m_Kind; }
  // The array a read fills, null for a column made from constant arrays.
  void* Target() const { return m_Target; }
  // The array an append takes, null for a column of string offsets.
  void const* Source() const { return m_Source; }
  unsigned char* Present() const { return m_Present; }
  unsigned char const* PresentSource() const { return m_PresentSource; }
  double NumberFill() const { return m_NumberFill; }
  cow_String const& StringFill() const { return m_StringFill; }

private:
  rfm_Column(rfm_FieldHandle const& field, Kind kind, void* target, void const* source, double fill)
      : m_Field(field), m_Kind(kind), m_Target(target), m_Source(source), m_NumberFill(fill) {}

  rfm_FieldHandle m_Field;
  Kind m_Kind;
  void* m_Target;
  void const* m_Source;
  unsigned char* m_Present = nullptr;
  unsigned char const* m_PresentSource = nullptr;
  double m_NumberFill;
  cow_String m_StringFill;
};

#endif
