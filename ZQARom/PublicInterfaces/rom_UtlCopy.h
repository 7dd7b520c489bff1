#ifndef rom_UtlCopy_h
#define rom_UtlCopy_h

#include "ZQABasExport.h"
#include "cls_PTrie.h"
#include "mem_Alloc.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "rfm_TableMetadata.h"
#include "rfm_Type.h"
#include "rom_CidOidNdx.h"

class rfm_Row;
class rfm_Table;
class rom_UtlDatabase;
class rom_UtlPrune;
class rom_UtlVisitor;

// Copies objects, with everything they reach, from databases into one
// target database, row by row: it never builds an application object, but
// follows the naming rules of columns (see rom_HeaderLayout.h) to find base
// class parts, references and collections. Fields are matched by name, so
// source and target tables need not share column indexes; a field without
// data stays without data.
//
// Invariant: the copy map holds, for each object copied (or being copied),
// its source row and index and its row in the target: each object is
// copied once per rom_UtlCopy, however often it is reached, and a cycle of
// references ends at the object it began with.
class ZQA_EXPORT rom_UtlCopy : public mem_AllocationOperators {
public:
  // The target must outlive the copy.
  explicit rom_UtlCopy(rom_UtlDatabase& target);
  rom_UtlCopy(rom_UtlCopy const&) = delete;
  rom_UtlCopy& operator=(rom_UtlCopy const&) = delete;
  ~rom_UtlCopy();

  // Neither is owned; null (the default) for none.
  void SetVisitor(rom_UtlVisitor* visitor) { m_Visitor = visitor; }
  void SetPrune(rom_UtlPrune* prune) { m_Prune = prune; }

  // The target's object id of the copy of row oid of class cid in source.
  // excluded is passed to a list's or a map's copy (see CopyList).
  int CopyObject(unsigned int cid, int oid, rom_UtlDatabase const& source, bool excluded);
  // A row of ##InternalMap, ##InternalList or ##InternalBlob and what its
  // Target#Handle names, or of ##InternalDblCol and the maps its two
  // handles name; each makes a new copy at every call, which CopyObject
  // then finds, and answers the new row's object id. A map's table, of any
  // map layout, is copied row for row: a removed key's row and each row of
  // a repeated key stay as they are; a map's handle that names no table of
  // a map layout raises, naming the file, and makes nothing. A list whose
  // handle names something other than a list (a table, or an array of
  // ints, floats, doubles or strings) answers -1 and makes nothing. A float
  // array moves through the array's own append with excluded set, and as
  // raw bytes without: the two give the same elements.
  int CopyMap(int oid, rom_UtlDatabase const& source, bool excluded);
  int CopyDoubleCollection(int oid, rom_UtlDatabase const& source);
  int CopyList(int oid, rom_UtlDatabase const& source, bool excluded);
  int CopyBlob(int oid, rom_UtlDatabase const& source);
  // Appends the rows of a collection's table, source of sourceDatabase, to
  // target, copying the objects they refer to.
  void AppendCollection(rfm_Table& source, rfm_Table& target, rom_UtlDatabase const& sourceDatabase);

private:
  // Enters the copy of (cid, oid) of source as object id copied.
  void Remember(unsigned int cid, int oid, rom_UtlDatabase const& source, int copied);
  void CopyFields(unsigned int cid, rfm_Row const& from, rfm_Row const& to, rom_UtlDatabase const& source);
  void CopyBaseClassPart(unsigned int cid, rfm_Row const& from, rfm_Row const& to, rom_UtlDatabase const& source);
  void CopyReference(unsigned int cid, rfm_MapName2FieldMetadata const& fields, cow_String const& classIdName,
                     rfm_Row const& from, rfm_Row const& to, rom_UtlDatabase const& source);
  // Copies field's data, if from holds any, to the same field of to.
  void CopyData(rfm_Row const& from, rfm_Row const& to, rfm_FieldHandle const& field,
                rom_UtlDatabase const& source) const;
  // Raises, naming both files, unless to has field.
  void RequireField(rfm_Row const& to, rfm_FieldHandle const& field, rom_UtlDatabase const& source) const;
  void WriteInt(rfm_Row const& to, rfm_FieldHandle const& field, int value, rom_UtlDatabase const& source) const;
  // The handle in from's field (Target#Handle, or a double collection's
  // Target#Handle2), from being row oid of the internal class cid; null
  // when it holds none. Raises, naming the file, for a handle that names no
  // object.
  rfm_Handle CollectionHandle(rfm_Row const& from, rfm_FieldHandle const& field, unsigned int cid, int oid,
                              rom_UtlDatabase const& source) const;
  // The same for a map's handle, which must name a table of a map's layout.
  rfm_Handle MapHandle(rfm_Row const& from, rfm_FieldHandle const& field, unsigned int cid, int oid,
                       rom_UtlDatabase const& source) const;
  // The copy of what a collection's Target#Handle names.
  rfm_Handle CopyTable(rfm_Handle handle, rom_UtlDatabase const& source);
  rfm_Handle CopyArray(rfm_Type type, rfm_Handle handle, rom_UtlDatabase const& source, bool excluded) const;
  rfm_Handle CopySpace(int oid, rfm_Handle handle, rom_UtlDatabase const& source) const;

  rom_UtlDatabase* m_Target;
  cls_PTrie<rom_CidOidNdx, int, 3> m_CopyMap;
  rom_UtlVisitor* m_Visitor = nullptr;
  rom_UtlPrune* m_Prune = nullptr;
  rfm_FieldHandle const m_BaseClassOid;
  rfm_FieldHandle const m_Key;
  rfm_FieldHandle const m_ClassId;
  rfm_FieldHandle const m_Oid;
  rfm_FieldHandle const m_Data;
  rfm_FieldHandle const m_TargetHandle;
  rfm_FieldHandle const m_TargetHandle2;
  rfm_FieldHandle const m_TargetColumns;
};

#endif
