#ifndef rfm_ArrayRepr_h
#define rfm_ArrayRepr_h

#include "cow_List.h"
#include "cow_String.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "rfm_IOBuffer.h"
#include "rfm_ObjectLayout.h"
#include "rfm_SpaceRepr.h"
#include "rfm_Type.h"

#include <memory>

// An array: a space holding a header and then rows of one element type (int,
// float, double or pooled string), each row the same number of elements.
// Rows move in whole arrays through a buffer on the space. Positions and
// lengths are counted in rows.
//
// Invariants:
// - The element type is one of the four above and the fields per row are
//   between 1 and kMaxFieldsPerRow, whether the array was made here or read
//   from a file: a row's size in bytes always fits an int and is never 0.
// - The space outlives the buffer on it, which flushes into it on the way out.
// - The array holds a share of its database, which outlives space and buffer.
// - The change count on disk moves only at Flush of a writer; a reader's
//   copy of it moves only at Snap.
class rfm_ArrayRepr : public mem_AllocationOperators {
public:
  static constexpr int kHeaderSize = kRfmArrayHeaderSize;
  static constexpr int kMaxFieldsPerRow = kRfmArrayMaxFieldsPerRow;

  // The existing array at handle; raises the texts of a damaged object or
  // of a handle to something else.
  rfm_ArrayRepr(rfm_Database const& database, rfm_Handle const& handle, int quantum, int bufferSize);
  // A new array of rows of fieldsPerRow elements of type.
  rfm_ArrayRepr(rfm_Database const& database, rfm_Type type, int fieldsPerRow, int quantum, int bufferSize);
  ~rfm_ArrayRepr();
  rfm_ArrayRepr(rfm_ArrayRepr const&) = delete;
  rfm_ArrayRepr& operator=(rfm_ArrayRepr const&) = delete;

  // Whether an array can hold elements of type: int, float, double or string.
  static bool IsElementType(int type);

  // rowCount rows from the current row on. Read answers the elements read
  // (not rows); Write answers rowCount.
  int Read(int* data, int rowCount);
  int Read(float* data, int rowCount);
  int Read(double* data, int rowCount);
  int Read(cow_String* data, int rowCount);
  int Write(int const* data, int rowCount);
  int Write(float const* data, int rowCount);
  int Write(double const* data, int rowCount);
  int Write(cow_String const* data, int rowCount);

  // Adds all rows of other at the end of this array; strings are stored
  // again in this array's pool.
  void Append(rfm_ArrayRepr& other);
  // Whether other's rows can be appended here as they are.
  bool CopyAllowed(rfm_ArrayRepr const& other) const;
  // Copies the array at handle in from, byte for byte, into a new space in
  // to; answers the new handle. String arrays cannot be copied so.
  static rfm_Handle CreateCopy(rfm_DatabaseRepr& from, rfm_DatabaseRepr& to, rfm_Handle handle);

  int FieldCount() const { return m_FieldsPerRow; }
  int RowSize() const;
  rfm_Type Type() const { return m_Type; }
  bool ReadOnly() const { return m_Buffer.ReadOnly(); }
  void Seek(int row);
  int Location() const;
  int Length() const;
  // Cuts the array to rows rows and goes to row 0.
  void Truncate(int rows);
  // A writer's new change count, written with the rows; 0 for a reader.
  int Flush();
  // A reader's new change count when a writer changed the array since the
  // last look, else 0.
  int Snap();
  utl_FileOffset SpaceAllocation() const { return m_Space->Allocation(); }
  // Bytes of the array, those waiting in the buffer included.
  utl_FileOffset SpaceLength() const { return m_Buffer.Length(); }
  cow_List<cow_String> GetObjStatistics() const;
  rfm_Handle Handle() const { return m_Space->Handle(); }

private:
  template <class T>
  int ReadRows(T* data, int rowCount);
  template <class T>
  int WriteRows(T const* data, int rowCount);
  int RowsAt(utl_FileOffset offset) const;

  // Declared first, so that it goes last: the database closes after the
  // buffer has written into it.
  rfm_Database m_Database;
  std::unique_ptr<rfm_SpaceRepr> m_Space;
  rfm_IOBuffer m_Buffer;
  rfm_Type m_Type = rfm_TypeNone;
  int m_FieldsPerRow = 0;
  int m_ChangeCount = 0;
  int m_FlushCountSeen;
};

#endif
