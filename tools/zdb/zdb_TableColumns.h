#ifndef zdb_TableColumns_h
#define zdb_TableColumns_h

#include "rfm_Row.h"
#include "rfm_Table.h"
#include "rfm_Type.h"
#include "zdb_CollectionTarget.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class zdb_TableFinder;

// One column of a table as zdb shows it: a field of the table, or a
// reference to an object that the object layer stores in two int fields
// (see rom_HeaderLayout.h). An element reference is the reference of a
// collection's row (of ##List, ##Map, ##MapInt2Obj), where a negative oid
// is null whatever its class id. A base reference is a derived class's
// kRomBaseClassOidName: one field, its class the catalogue's base class.
// A list's, a blob's or a map's target is the handle field Target#Handle of
// the object layer's ##InternalList, ##InternalBlob or ##InternalMap table,
// or either handle field of ##InternalDblCol (Target#Handle and
// Target#Handle2), which names the collection's store (see
// zdb_CollectionTarget).
struct zdb_Column {
  enum Kind { kField, kReference, kElementReference, kBaseReference, kListTarget, kBlobTarget, kMapTarget };
  Kind m_Kind = kField;
  std::string m_Name;
  rfm_Type m_Type = rfm_TypeNone;  // of a field; a reference's are ints
  int m_Index = -1;                // the field; a reference's oid field
  int m_ClassIndex = -1;           // a reference's class id field
  std::uint32_t m_BaseClass = 0;   // a base reference's class id
};

// A reference as a row stores it; a value is empty when its field holds no
// data.
struct zdb_StoredReference {
  std::optional<int> m_Oid;
  std::optional<std::uint32_t> m_ClassId;

  // Null as the object layer writes it: either field without data (a row
  // never given the reference), or a negative oid (the null reference, or
  // an object of a class without a table), which names no row.
  bool IsNull() const { return !m_Oid || !m_ClassId || *m_Oid < 0; }
};

// Whether column holds a reference to an object.
inline bool zdb_IsReference(zdb_Column const& column) {
  return column.m_Kind == zdb_Column::kReference || column.m_Kind == zdb_Column::kElementReference ||
         column.m_Kind == zdb_Column::kBaseReference;
}

// The columns of a table in the order of its fields' positions, one per
// present field, except that both fields of a reference make one column at
// the place of the first of them. Only a pair of two int fields is a
// reference; any other field stays a column of its own.
//
// Every field on its own: a table outside the object layer's.
std::vector<zdb_Column> zdb_FieldColumns(rfm_Table const& table);
// A class's table: each attribute's N#OID and N#ClassID are the reference
// N; the derived class's kRomBaseClassOidName, when baseClass is not
// kRomNoClass, is a base reference of that class.
std::vector<zdb_Column> zdb_ClassTableColumns(rfm_Table const& table, std::uint32_t baseClass);
// The table of ##InternalList, ##InternalBlob, ##InternalMap or
// ##InternalDblCol: a class's table, whose handle field Target#Handle is
// the column of kind target, kListTarget, kBlobTarget or kMapTarget; a
// double collection's Target#Handle2 is a kMapTarget too.
std::vector<zdb_Column> zdb_CollectionRowColumns(rfm_Table const& table, std::uint32_t baseClass,
                                                 zdb_Column::Kind target);
// A collection's table: its kRomElementOidName and kRomElementClassIdName
// are one element reference, named after the oid field.
std::vector<zdb_Column> zdb_CollectionColumns(rfm_Table const& table);

// The reference that row holds in a column that zdb_IsReference.
zdb_StoredReference zdb_ReadReference(rfm_Row const& row, zdb_Column const& column);

// What handle, read from a target column (kListTarget, kBlobTarget or
// kMapTarget), names.
zdb_CollectionTarget zdb_TargetOf(zdb_TableFinder const& finder, zdb_Column const& column, int handle);

// What zdb calls a column's type: the field's type, "reference", "list",
// "blob" or "map".
std::string zdb_ColumnTypeName(zdb_Column const& column);

#endif
