#ifndef rom_Objects_h
#define rom_Objects_h

#include "ZQABasExport.h"
#include "cls_ClassIdOf.h"
#include "cls_CowValue.h"
#include "cow_COW.h"
#include "rom_CidOid.h"
#include "rom_Transporter.h"

// Objects written and read as roots: not as a member of another object, but
// by the application, which keeps where they went.
//
// A root is written through its class's registered metadata, as a member
// would be: its row is the one its identity has in this database (a new row
// on its first write), and a shared value the transporter has written or
// read already is not written again. Each answers the object's row: its
// class id and object id, the row number in the class's table (the null
// row for an empty value, and for a class without a table).

// value holds an object of class cid, or of a class registered to write it.
ZQA_EXPORT rom_CidOid rom_WriteObject(rom_Transporter& transporter, cls_CowValue const& value, unsigned int cid);

template <class T, class Policy>
rom_CidOid rom_WriteObject(rom_Transporter& transporter, cow_COW<T, Policy> const& value) {
  return rom_WriteObject(transporter, cls_CowValue(value), cls_ClassIdOf<T>::kValue);
}

// The object in row, built as the class stored there (which must be T's
// class or derive from it), once per transporter: read again, it is the same
// value. An empty value for the null row.
template <class T, class Policy = cow_Direct<T>>
cow_COW<T, Policy> rom_ReadObject(rom_Transporter& transporter, rom_CidOid const& row) {
  if (row.m_Oid < 0) return cow_COW<T, Policy>();
  return transporter.CheckReadObjCow(row.m_Oid, row.m_Cid, cls_ClassIdOf<T>::kValue).template As<T, Policy>();
}

// The object in row oid of T's own table.
template <class T, class Policy = cow_Direct<T>>
cow_COW<T, Policy> rom_ReadObject(rom_Transporter& transporter, int oid) {
  return rom_ReadObject<T, Policy>(transporter, rom_CidOid(cls_ClassIdOf<T>::kValue, oid));
}

#endif
