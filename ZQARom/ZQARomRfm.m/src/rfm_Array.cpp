#include "rfm_Array.h"

#include "rfm_ArrayRepr.h"
#include "rfm_Database.h"
#include "rfm_DatabaseRepr.h"

template <class T, rfm_Type ElementType>
rfm_Array<T, ElementType>::rfm_Array() = default;

template <class T, rfm_Type ElementType>
rfm_Array<T, ElementType>::rfm_Array(rfm_ArrayRepr* repr) : m_Repr(repr) {}

template <class T, rfm_Type ElementType>
rfm_Array<T, ElementType>::rfm_Array(rfm_Array const& other) = default;

template <class T, rfm_Type ElementType>
rfm_Array<T, ElementType>& rfm_Array<T, ElementType>::operator=(rfm_Array const& other) = default;

template <class T, rfm_Type ElementType>
rfm_Array<T, ElementType>::~rfm_Array() = default;

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::Read(T* data, int rowCount) const {
  return Repr().Read(data, rowCount);
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::Write(T const* data, int rowCount) const {
  return Repr().Write(data, rowCount);
}

template <class T, rfm_Type ElementType>
void rfm_Array<T, ElementType>::Append(rfm_Array const& other) const {
  Repr().Append(other.Repr());
}

template <class T, rfm_Type ElementType>
bool rfm_Array<T, ElementType>::CopyAllowed(rfm_Array const& other) const {
  return Repr().CopyAllowed(other.Repr());
}

template <class T, rfm_Type ElementType>
rfm_Handle rfm_Array<T, ElementType>::CreateCopy(rfm_Database& from, rfm_Database& to, rfm_Handle handle) {
  return rfm_ArrayRepr::CreateCopy(from.Repr(), to.Repr(), handle);
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::FieldCount() const {
  return Repr().FieldCount();
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::RowSize() const {
  return Repr().RowSize();
}

template <class T, rfm_Type ElementType>
rfm_Type rfm_Array<T, ElementType>::Type() const {
  return Repr().Type();
}

template <class T, rfm_Type ElementType>
void rfm_Array<T, ElementType>::Seek(int row) const {
  Repr().Seek(row);
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::Location() const {
  return Repr().Location();
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::Length() const {
  return Repr().Length();
}

template <class T, rfm_Type ElementType>
void rfm_Array<T, ElementType>::Truncate(int rows) const {
  Repr().Truncate(rows);
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::Flush() const {
  return Repr().Flush();
}

template <class T, rfm_Type ElementType>
int rfm_Array<T, ElementType>::Snap() const {
  return Repr().Snap();
}

template <class T, rfm_Type ElementType>
utl_FileOffset rfm_Array<T, ElementType>::SpaceAllocation() const {
  return Repr().SpaceAllocation();
}

template <class T, rfm_Type ElementType>
utl_FileOffset rfm_Array<T, ElementType>::SpaceLength() const {
  return Repr().SpaceLength();
}

template <class T, rfm_Type ElementType>
cow_List<cow_String> rfm_Array<T, ElementType>::GetObjStatistics() const {
  return Repr().GetObjStatistics();
}

template <class T, rfm_Type ElementType>
rfm_Handle rfm_Array<T, ElementType>::Handle() const {
  return Repr().Handle();
}

template class rfm_Array<int, rfm_TypeInt>;
template class rfm_Array<float, rfm_TypeFloat>;
template class rfm_Array<double, rfm_TypeDouble>;
template class rfm_Array<cow_String, rfm_TypeString>;
