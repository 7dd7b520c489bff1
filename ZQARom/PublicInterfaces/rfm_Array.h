#ifndef rfm_Array_h
#define rfm_Array_h

#include "cow_CountedHld.h"
#include "cow_List.h"
#include "cow_String.h"
#include "rfm_Handle.h"
#include "rfm_Type.h"
#include "utl_FileOffset.h"

class rfm_ArrayRepr;
class rfm_Database;

// An array by value, with elements of type T stored as ElementType: copies
// share one representation, and with it one position. Instantiated for (int,
// rfm_TypeInt), (float, rfm_TypeFloat), (double, rfm_TypeDouble) and
// (cow_String, rfm_TypeString); the database's factories make them. The
// array holds a share of its database, which stays open while the array
// lives (see rfm_Database).
template <class T, rfm_Type ElementType>
class ZQA_EXPORT rfm_Array {
public:
  rfm_Array();
  // Takes ownership of repr, whose elements must be of ElementType.
  explicit rfm_Array(rfm_ArrayRepr* repr);
  rfm_Array(rfm_Array const& other);
  rfm_Array& operator=(rfm_Array const& other);
  ~rfm_Array();

  // rowCount rows of FieldCount() elements each, from the current row on.
  // Read answers the elements read, Write the rows written.
  int Read(T* data, int rowCount) const;
  int Write(T const* data, int rowCount) const;
  // Adds all rows of other at the end; the array must be writable.
  void Append(rfm_Array const& other) const;
  bool CopyAllowed(rfm_Array const& other) const;
  // A raw copy of the array at handle in from as a new object in to; answers
  // its handle. Not for string arrays, whose strings belong to from's pool.
  static rfm_Handle CreateCopy(rfm_Database& from, rfm_Database& to, rfm_Handle handle);

  int FieldCount() const;
  int RowSize() const;
  rfm_Type Type() const;
  void Seek(int row) const;
  int Location() const;
  int Length() const;
  void Truncate(int rows) const;
  int Flush() const;
  int Snap() const;
  utl_FileOffset SpaceAllocation() const;
  utl_FileOffset SpaceLength() const;
  cow_List<cow_String> GetObjStatistics() const;
  rfm_Handle Handle() const;

  bool IsNull() const { return m_Repr.IsNull(); }
  // The representation, for the library's own layers.
  rfm_ArrayRepr& Repr() const { return m_Repr.GetRef(); }

private:
  cow_CountedHld<rfm_ArrayRepr> m_Repr;
};

// The four arrays are instantiated once, in the library, where the
// representation is known. Only IsNull and Repr stay inline: they need
// nothing of it.
extern template class rfm_Array<int, rfm_TypeInt>;
extern template class rfm_Array<float, rfm_TypeFloat>;
extern template class rfm_Array<double, rfm_TypeDouble>;
extern template class rfm_Array<cow_String, rfm_TypeString>;

#endif
