#ifndef rom_HeaderLayout_h
#define rom_HeaderLayout_h

#include "cls_CollectionClass.h"
#include "rfm_Type.h"

#include <cstdint>
#include <cstring>

// The object layer's header, at the database's root object (handle 4), and
// the catalogue of class tables it leads to. The root's first word tells the
// header's form:
//
//   first word              form            the catalogue
//   kRfmTaggedStreamMagic   tagged stream   the table whose handle is item kRomTagCatalog
//   kRfmTableMagic          table           the root is the catalogue itself
//   kRomVersionSpaceMagic   version space   the table at handle 5
//
// A version space holds two ints: offset 0 kRomVersionSpaceMagic, offset 4
// the header version. A tagged-stream header holds one item per field, in
// ascending tag order, and leaves out a field that is 0 (the release type:
// one that is negative); readers skip tags above kRomTagReleaseType.
//
//   tag  item type  field
//     0  handle     the catalogue table
//     1  int        header version, kRomHeaderVersion when this library writes it
//     2  int        major version of the writing program
//     3  int        minor version
//     4  int        update version
//     5  int        release type
//
// The catalogue holds one row per class that has a table, its fields at
// fixed indexes (older files may lack Class Version):
//
//   index  name            type
//       0  Class ID        int
//       1  Class Table     handle
//       2  Class Name      string
//       3  Base Class ID   int (kRomNoClass for a root class)
//       4  Class Version   int
//
// A class's table is named after the class; the table of a derived class
// begins with the int field kRomBaseClassOidName, the row of the object's
// base class part. An attribute takes one column named after it, or, for a
// reference or a collection, columns of its name and a suffix:
//
//   attribute             columns, in this order
//   object reference      N#OID int (the row), N#ClassID int (the class id)
//   list                  N#Handle handle, N#Columns int
//   map, blob             N#Handle handle
//   double collection     N#Handle handle, N#Handle2 handle
//
// The stored null reference is oid -1 with class id kRomNoClass; a pair
// either of whose fields holds no data is null too. The rows of the
// collection tables that hold objects (##List, ##Map, ##MapInt2Obj) refer to
// them by the int fields kRomElementOidName and kRomElementClassIdName;
// there an object of a class without a table is oid -1 with its own class
// id. A negative oid names no row.

constexpr std::uint32_t kRomVersionSpaceMagic = 0xFFAAEEBB;
// Where a version space holds the header version, and its size.
constexpr int kRomVersionSpaceVersionOffset = 4;
constexpr int kRomVersionSpaceSize = 8;

enum rom_HeaderTag {
  kRomTagCatalog = 0,
  kRomTagVersion = 1,
  kRomTagMajorVersion = 2,
  kRomTagMinorVersion = 3,
  kRomTagUpdateVersion = 4,
  kRomTagReleaseType = 5,
};

constexpr int kRomHeaderVersion = 0x332;

// Names are inline, one object for the whole program, so that inline
// functions may refer to them.
inline constexpr char kRomCatalogName[] = "##Catalog";

enum rom_CatalogField {
  kRomCatalogClassId = 0,
  kRomCatalogClassTable = 1,
  kRomCatalogClassName = 2,
  kRomCatalogBaseClassId = 3,
  kRomCatalogClassVersion = 4,
};

inline constexpr char kRomCatalogClassIdName[] = "Class ID";
inline constexpr char kRomCatalogClassTableName[] = "Class Table";
inline constexpr char kRomCatalogClassNameName[] = "Class Name";
inline constexpr char kRomCatalogBaseClassIdName[] = "Base Class ID";
inline constexpr char kRomCatalogClassVersionName[] = "Class Version";

// The class id that means no class: no base class, or a null reference.
constexpr unsigned int kRomNoClass = 1;

inline constexpr char kRomBaseClassOidName[] = "##BaseClassOID";
// It is a derived table's first column.
constexpr int kRomBaseClassOidColumn = 0;

// A reference takes two int columns, the attribute's name with these
// suffixes, the class id's right after the object id's. The stored null
// reference is object id -1 with kRomNoClass; any negative object id is null.
inline constexpr char kRomOidSuffix[] = "#OID";
inline constexpr char kRomClassIdSuffix[] = "#ClassID";
// A list, map or blob member takes the collection's handle, a list also its
// columns, a double collection a second handle.
inline constexpr char kRomHandleSuffix[] = "#Handle";
inline constexpr char kRomColumnsSuffix[] = "#Columns";
inline constexpr char kRomHandle2Suffix[] = "#Handle2";

// A collection's row refers to an object by these two int columns, first.
inline constexpr char kRomElementOidName[] = "OID";
inline constexpr char kRomElementClassIdName[] = "ClassID";
// A collection's row holds a value and, in a map, its key in these.
inline constexpr char kRomElementDataName[] = "Data";
inline constexpr char kRomElementKeyName[] = "Key";

// The object layer names its own tables, classes and fields with this prefix.
inline constexpr char kRomOwnNamePrefix[] = "##";

// The object layer's own classes, which hold anonymous collections.
constexpr unsigned int kRomInternalListClass = cls_kListClass;
constexpr unsigned int kRomInternalMapClass = cls_kMapClass;
constexpr unsigned int kRomInternalCowClass = cls_kCowClass;
constexpr unsigned int kRomInternalDblColClass = cls_kDoubleCollectionClass;
constexpr unsigned int kRomInternalBlobClass = cls_kBlobClass;
inline constexpr char kRomInternalListName[] = "##InternalList";
inline constexpr char kRomInternalMapName[] = "##InternalMap";
inline constexpr char kRomInternalCowName[] = "##InternalCow";
inline constexpr char kRomInternalDblColName[] = "##InternalDblCol";
inline constexpr char kRomInternalBlobName[] = "##InternalBlob";

// The one attribute of the collection classes: its columns are
// "Target#Handle" and, for a list, "Target#Columns".
inline constexpr char kRomTargetName[] = "Target";
// A collection class's row: the handle of the collection's store, then,
// for a list, the number of elements in one of its logical rows.
constexpr int kRomTargetHandleColumn = 0;
constexpr int kRomTargetColumnsColumn = 1;
// A double collection's row holds the second collection's handle there.
constexpr int kRomTargetHandle2Column = 1;

// The tables that hold lists: references to objects, and, in older files,
// strings.
inline constexpr char kRomListTableName[] = "##List";
inline constexpr char kRomStringArrayTableName[] = "##StringArray";

// The tables that hold maps, one layout for each kind of key and value.
// Rows stand in the order written, and a key may have several. ##Map and
// ##MapInt2Obj hold an object by kRomElementOidName and
// kRomElementClassIdName (columns 0 and 1) and the key in column 2; the
// others hold kRomElementDataName and kRomElementKeyName, addressed by
// name, since the two change places among them. Unsigned values are stored
// in the Int layouts as the int of the same bits.
inline constexpr char kRomMapTableName[] = "##Map";
inline constexpr char kRomMapInt2ObjTableName[] = "##MapInt2Obj";
inline constexpr char kRomMapString2DoubleTableName[] = "##MapString2Double";
inline constexpr char kRomMapString2FloatTableName[] = "##MapString2Float";
inline constexpr char kRomMapString2IntTableName[] = "##MapString2Int";
inline constexpr char kRomMapString2StringTableName[] = "##MapString2String";
inline constexpr char kRomMapInt2DoubleTableName[] = "##MapInt2Double";
inline constexpr char kRomMapInt2FloatTableName[] = "##MapInt2Float";
inline constexpr char kRomMapInt2IntTableName[] = "##MapInt2Int";
inline constexpr char kRomMapInt2StringTableName[] = "##MapInt2String";

// A map's table layout by what it holds: the type of its key, rfm_TypeInt
// or rfm_TypeString, and of its values, rfm_TypeNone for objects.
struct rom_MapLayout {
  char const* m_Name;
  rfm_Type m_Key;
  rfm_Type m_Value;
};

inline constexpr rom_MapLayout kRomMapLayouts[] = {
    {kRomMapTableName, rfm_TypeString, rfm_TypeNone},
    {kRomMapInt2ObjTableName, rfm_TypeInt, rfm_TypeNone},
    {kRomMapString2DoubleTableName, rfm_TypeString, rfm_TypeDouble},
    {kRomMapString2FloatTableName, rfm_TypeString, rfm_TypeFloat},
    {kRomMapString2IntTableName, rfm_TypeString, rfm_TypeInt},
    {kRomMapString2StringTableName, rfm_TypeString, rfm_TypeString},
    {kRomMapInt2DoubleTableName, rfm_TypeInt, rfm_TypeDouble},
    {kRomMapInt2FloatTableName, rfm_TypeInt, rfm_TypeFloat},
    {kRomMapInt2IntTableName, rfm_TypeInt, rfm_TypeInt},
    {kRomMapInt2StringTableName, rfm_TypeInt, rfm_TypeString},
};

// Whether name is the layout of a map's table.
inline bool rom_IsMapLayout(char const* name) {
  for (rom_MapLayout const& layout : kRomMapLayouts)
    if (std::strcmp(layout.m_Name, name) == 0) return true;
  return false;
}

// Whether a catalogue row records its class's version: catalogues of old
// files lack the field, and a row whose field holds no data counts as
// such a row rather than as damage.
template <class Row, class Field>
bool rom_CatalogRowHasVersion(Row const& row, Field const& classVersion) {
  return row.FieldIsPresent(classVersion) && row.DataIsPresent(classVersion);
}

inline bool rom_IsInternalClass(unsigned int classId) {
  return classId >= kRomInternalListClass && classId <= kRomInternalBlobClass;
}

#endif
