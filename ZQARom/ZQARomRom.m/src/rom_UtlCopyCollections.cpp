// The copy of collections: what a row of the object layer's internal
// classes names through Target#Handle (and a double collection's
// Target#Handle2), and the rows of a collection's table.
#include "rom_UtlCopy.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cow_ListIter.h"
#include "omi_BtreeIterator.h"
#include "rfm_Array.h"
#include "rfm_Row.h"
#include "rfm_Space.h"
#include "rfm_Table.h"
#include "rom_HeaderLayout.h"
#include "rom_UtlDatabase.h"
#include "rom_UtlVisitor.h"

#include <algorithm>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_UtlCopyCollections";

char const kNamesNothing[] = "rom_UtlCopy - Object %d of class %08X in %s names the handle %d, which is no object "
                             "of the file. The database is corrupt.";
char const kNotATable[] = "rom_UtlCopy - Object %d of class %08X in %s names the handle %d, which is not a table. "
                          "The database is corrupt.";
char const kNotAMap[] = "rom_UtlCopy - Object %d of class %08X in %s names the table \"%s\" at handle %d, which is "
                        "no map's table. The database is corrupt.";
char const kUnknownLayout[] = "rom_UtlCopy - The collection table \"%s\" of %s has a layout that %s does not know.";
char const kHandleColumn[] = "rom_UtlCopy - The collection table \"%s\" of %s holds handles in its field \"%s\": "
                             "the copy cannot follow them.";
char const kShortBlob[] = "rom_UtlCopy::CopyBlob - Only %d of the %d bytes of blob %d in %s could be read. The "
                          "database is corrupt.";

// A blob's bytes move in pieces of at most this many.
constexpr int kBlobChunk = 1024;

bool IsListType(rfm_Type type) {
  switch (type) {
    case rfm_TypeTable:
    case rfm_TypeString:
    case rfm_TypeDouble:
    case rfm_TypeInt:
    case rfm_TypeFloat:
      return true;
    default:
      return false;
  }
}

template <class T, rfm_Type Type>
using ArrayOpener = rfm_Array<T, Type> (rfm_Database::*)(rfm_Handle, int, int) const;
template <class T, rfm_Type Type>
using ArrayMaker = rfm_Array<T, Type> (rfm_Database::*)(int, int, int) const;

// A new array in to, as wide as the one at handle in from, holding its rows.
template <class T, rfm_Type Type>
rfm_Handle AppendArray(rfm_Database const& from, rfm_Database const& to, rfm_Handle handle,
                       ArrayOpener<T, Type> open, ArrayMaker<T, Type> make) {
  rfm_Array<T, Type> const source = (from.*open)(handle, -1, 0);
  rfm_Array<T, Type> const target = (to.*make)(source.FieldCount(), -1, 0);
  target.Append(source);
  target.Flush();
  return target.Handle();
}
}  // namespace

// A handle the file hands out for no object raises, naming the file, here
// and not in the record store, whose message would not. An object that has
// not grown yet has no extent: only the list of objects tells it apart.
rfm_Handle rom_UtlCopy::CollectionHandle(rfm_Row const& from, rfm_FieldHandle const& field, unsigned int cid, int oid,
                                         rom_UtlDatabase const& source) const {
  if (!from.DataIsPresent(field)) return rfm_Handle();
  rfm_Handle const handle = from.ReadFieldHandle(field);
  rfm_Database const& database = source.Database();
  if (database.ExtentCount(handle) > 0) return handle;
  for (cow_ListIter<rfm_Handle> it(database.ObjectHandles()); !it.IsDone(); it.Next())
    if (it.CurrentItem() == handle) return handle;
  nex_ThrowMessage(kSourcePath, __LINE__,
                   atr_SubstituteFormat(atr_translate(kNamesNothing), oid, cid, database.FileName(), handle.Value()));
}

// A table of another layout would be copied as rows of keys and values
// it does not have: it is refused, as anything but a table is.
rfm_Handle rom_UtlCopy::MapHandle(rfm_Row const& from, rfm_FieldHandle const& field, unsigned int cid, int oid,
                                  rom_UtlDatabase const& source) const {
  rfm_Handle const handle = CollectionHandle(from, field, cid, oid, source);
  if (handle.IsNull()) return handle;
  rfm_Database const& database = source.Database();
  if (database.HandleType(handle) != rfm_TypeTable)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNotATable), oid, cid, database.FileName(), handle.Value()));
  cow_String const layout = source.Table(handle).TableMetadata().TableName();
  if (!rom_IsMapLayout(layout.CStr()))
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNotAMap), oid, cid, database.FileName(), layout,
                                          handle.Value()));
  return handle;
}

// Each of these checks what its row names before it takes a row in the
// target, and enters the new row before copying what the collection holds,
// for the reason CopyObject's objects are entered early. A row without
// data in a handle is an absent collection, and stays absent.
int rom_UtlCopy::CopyMap(int oid, rom_UtlDatabase const& source, bool) {
  rfm_Row const from = source.Object(kRomInternalMapClass, oid);
  rfm_Handle const handle = MapHandle(from, m_TargetHandle, kRomInternalMapClass, oid, source);
  rfm_Row const to = m_Target->NewObject(kRomInternalMapClass);
  Remember(kRomInternalMapClass, oid, source, to.Location());
  if (!handle.IsNull()) to.WriteFieldHandle(m_TargetHandle, CopyTable(handle, source));
  return to.Location();
}

// Its two handles name two maps of their own.
int rom_UtlCopy::CopyDoubleCollection(int oid, rom_UtlDatabase const& source) {
  rfm_Row const from = source.Object(kRomInternalDblColClass, oid);
  rfm_Handle const first = MapHandle(from, m_TargetHandle, kRomInternalDblColClass, oid, source);
  rfm_Handle const second = MapHandle(from, m_TargetHandle2, kRomInternalDblColClass, oid, source);
  rfm_Row const to = m_Target->NewObject(kRomInternalDblColClass);
  Remember(kRomInternalDblColClass, oid, source, to.Location());
  if (!first.IsNull()) to.WriteFieldHandle(m_TargetHandle, CopyTable(first, source));
  if (!second.IsNull()) to.WriteFieldHandle(m_TargetHandle2, CopyTable(second, source));
  return to.Location();
}

int rom_UtlCopy::CopyList(int oid, rom_UtlDatabase const& source, bool excluded) {
  rfm_Row const from = source.Object(kRomInternalListClass, oid);
  rfm_Handle const handle = CollectionHandle(from, m_TargetHandle, kRomInternalListClass, oid, source);
  rfm_Type const type = handle.IsNull() ? rfm_TypeNone : source.Database().HandleType(handle);
  if (!handle.IsNull() && !IsListType(type)) return -1;
  rfm_Row const to = m_Target->NewObject(kRomInternalListClass);
  Remember(kRomInternalListClass, oid, source, to.Location());
  if (!handle.IsNull())
    to.WriteFieldHandle(m_TargetHandle, type == rfm_TypeTable ? CopyTable(handle, source)
                                                              : CopyArray(type, handle, source, excluded));
  CopyData(from, to, m_TargetColumns, source);
  return to.Location();
}

int rom_UtlCopy::CopyBlob(int oid, rom_UtlDatabase const& source) {
  rfm_Row const from = source.Object(kRomInternalBlobClass, oid);
  rfm_Handle const handle = CollectionHandle(from, m_TargetHandle, kRomInternalBlobClass, oid, source);
  rfm_Row const to = m_Target->NewObject(kRomInternalBlobClass);
  Remember(kRomInternalBlobClass, oid, source, to.Location());
  if (!handle.IsNull()) to.WriteFieldHandle(m_TargetHandle, CopySpace(oid, handle, source));
  return to.Location();
}

rfm_Handle rom_UtlCopy::CopySpace(int oid, rfm_Handle handle, rom_UtlDatabase const& source) const {
  rfm_Space const from = source.Database().Space(handle, -1);
  rfm_Space const to = m_Target->Database().Space(-1);
  utl_FileOffset const length = from.Length();
  // Grown to its length at once, not chunk by chunk; the record store
  // refuses to grow by nothing.
  if (length > 0) to.Extend(length);
  from.Seek(0);
  to.Seek(0);
  char chunk[kBlobChunk];
  for (utl_FileOffset done = 0; done < length;) {
    int const count = static_cast<int>(std::min<utl_FileOffset>(kBlobChunk, length - done));
    if (from.Read(chunk, count) != count)
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kShortBlob), done, length, oid,
                                            source.Database().FileName()));
    to.Write(chunk, count);
    done += count;
  }
  to.Flush();
  return to.Handle();
}

rfm_Handle rom_UtlCopy::CopyArray(rfm_Type type, rfm_Handle handle, rom_UtlDatabase const& source,
                                  bool excluded) const {
  rfm_Database from = source.Database();
  rfm_Database to = m_Target->Database();
  switch (type) {
    case rfm_TypeString:
      return AppendArray(from, to, handle, &rfm_Database::ArrayString, &rfm_Database::ArrayString);
    case rfm_TypeDouble:
      return AppendArray(from, to, handle, &rfm_Database::ArrayDouble, &rfm_Database::ArrayDouble);
    case rfm_TypeInt:
      return AppendArray(from, to, handle, &rfm_Database::ArrayInt, &rfm_Database::ArrayInt);
    default:
      // Floats, the last kind of list array. They hold no reference into
      // their file's string pool, so their bytes may move as they are.
      if (excluded) return AppendArray(from, to, handle, &rfm_Database::ArrayFloat, &rfm_Database::ArrayFloat);
      return rfm_Array<float, rfm_TypeFloat>::CreateCopy(from, to, handle);
  }
}

rfm_Handle rom_UtlCopy::CopyTable(rfm_Handle handle, rom_UtlDatabase const& source) {
  rfm_Table from = source.Table(handle);
  rfm_TableMetadata const& layout = from.TableMetadata();
  cow_String const& name = layout.TableName();
  if (!m_Target->Database().HasTable(name))
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kUnknownLayout), name, source.Database().FileName(),
                                          m_Target->Database().FileName()));
  // Checked before the table is made: a failure leaves no half copy behind.
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(layout.FieldMap()); !it.IsDone(); it.Next())
    if (it.CurrentValue().Present() != 0 && it.CurrentValue().Type() == rfm_TypeHandle)
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kHandleColumn), name, source.Database().FileName(),
                                            it.CurrentValue().Name()));
  rfm_Table to = m_Target->Database().Table(name, -1, -1);
  AppendCollection(from, to, source);
  return to.Handle();
}

void rom_UtlCopy::AppendCollection(rfm_Table& source, rfm_Table& target, rom_UtlDatabase const& sourceDatabase) {
  for (int row = 0; source.RowExists(row); ++row) {
    rfm_Row const from = source.ReadRow(row);
    rfm_Row to = target.NewRow();
    if (from.DataIsPresent(m_ClassId) && from.DataIsPresent(m_Oid)) {
      auto const cid = static_cast<unsigned int>(from.ReadFieldInt(m_ClassId));
      int const oid = from.ReadFieldInt(m_Oid);
      // A negative object id keeps its class id: an element of a class
      // without a table is stored so, and reads as an object of that class.
      bool const null = cid == kRomNoClass || oid < 0;
      WriteInt(to, m_ClassId, static_cast<int>(cid), sourceDatabase);
      WriteInt(to, m_Oid, null ? -1 : CopyObject(cid, oid, sourceDatabase, false), sourceDatabase);
    }
    CopyData(from, to, m_Key, sourceDatabase);
    CopyData(from, to, m_Data, sourceDatabase);
    if (m_Visitor != nullptr && to.DataIsPresent(m_Key)) m_Visitor->AcceptMapRowAfterCopy(to);
  }
}
