#ifndef rfm_Array_h
#define rfm_Array_h

#include "cow_CountedHld.h"
#include "rfm_ArrayRepr.h"
#include "rfm_Database.h"

// An array by value, with elements of type T stored as ElementType: copies
// share one representation, and with it one position. Instantiated for (int,
// rfm_TypeInt), (float, rfm_TypeFloat), (double, rfm_TypeDouble) and
// (cow_String, rfm_TypeString); the database's factories make them. The
// array holds a share of its database, which stays open while the array
// lives (see rfm_Database).
template <class T, rfm_Type ElementType>
class rfm_Array {
public:
  rfm_Array() = default;
  // Takes ownership of repr, whose elements must be of ElementType.
  explicit rfm_Array(rfm_ArrayRepr* repr) : m_Repr(repr) {}

  // rowCount rows of FieldCount() elements each, from the current row on.
  // Read answers the elements read, Write the rows written.
  int Read(T* data, int rowCount) const { return Repr().Read(data, rowCount); }
  int Write(T const* data, int rowCount) const { return Repr().Write(data, rowCount); }
  // Adds all rows of other at the end; the array must be writable.
  void Append(rfm_Array const& other) const { Repr().Append(other.Repr()); }
  bool CopyAllowed(rfm_Array const& other) const { return Repr().CopyAllowed(other.Repr()); }
  // A raw copy of the array at handle in from as a new object in to; answers
  // its handle. Not for string arrays, whose strings belong to from's pool.
  static rfm_Handle CreateCopy(rfm_Database& from, rfm_Database& to, rfm_Handle handle) {
    return rfm_ArrayRepr::CreateCopy(from.Repr(), to.Repr(), handle);
  }

  int FieldCount() const { return Repr().FieldCount(); }
  int RowSize() const { return Repr().RowSize(); }
  rfm_Type Type() const { return Repr().Type(); }
  void Seek(int row) const { Repr().Seek(row); }
  int Location() const { return Repr().Location(); }
  int Length() const { return Repr().Length(); }
  void Truncate(int rows) const { Repr().Truncate(rows); }
  int Flush() const { return Repr().Flush(); }
  int Snap() const { return Repr().Snap(); }
  utl_FileOffset SpaceAllocation() const { return Repr().SpaceAllocation(); }
  utl_FileOffset SpaceLength() const { return Repr().SpaceLength(); }
  cow_List<cow_String> GetObjStatistics() const { return Repr().GetObjStatistics(); }
  rfm_Handle Handle() const { return Repr().Handle(); }

  bool IsNull() const { return m_Repr.IsNull(); }
  rfm_ArrayRepr& Repr() const { return m_Repr.GetRef(); }

private:
  cow_CountedHld<rfm_ArrayRepr> m_Repr;
};

#endif
