// The read memento's collections: the readers and agents of the list, map
// or blob that its row, a row of a collection class, holds.
#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_AttributeType.h"
#include "cls_FieldHandle.h"
#include "rom_AgentBlob.h"
#include "rom_ArrayNumber.h"
#include "rom_ArrayString.h"
#include "rom_HeaderLayout.h"
#include "rom_ListObj.h"
#include "rom_ListPrim.h"
#include "rom_AgentMapKey2Obj.h"
#include "rom_MapObj.h"
#include "rom_MapPrim.h"
#include "rom_MementoRead.h"
#include "rom_Transporter.h"
#include "typ_ArchCompTable.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_MementoReadCollections";

char const kBadColumns[] =
    "rom_MementoRead::CollectionColumns - The list in %s[%d] of %s has %d columns; a list has at least one.";

char const kNotACollection[] =
    "rom_MementoRead::MakeReadCollection - Member %s of %s[%d] in %s refers to %s[%d], not to a collection of class "
    "%s.";

rfm_FieldHandle const kColumns(kRomTargetColumnsColumn);

// A list whose row holds no column count has one.
int const kDefaultColumns = 1;
}  // namespace

cls_MementoRead* rom_MementoRead::MakeReadCollection(cls_FieldHandle const& field, unsigned int collectionClass) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!ReadReference(field, stored, oid)) {
    // A missing reference raises as for any object member.
    if (!ObjIsPresent(field)) return MakeReadObj(field);
    return nullptr;
  }
  if (stored != collectionClass)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNotACollection), field.Name(),
                                          typ_ArchCompTable::GetName(m_Cid), Oid(), m_Transporter->FileName(),
                                          typ_ArchCompTable::GetName(stored), oid,
                                          typ_ArchCompTable::GetName(collectionClass)));
  return MakeMemento(stored, oid);
}

bool rom_MementoRead::CollectionHandle(rfm_Handle& handle, int handleColumn) const {
  rfm_FieldHandle const field(handleColumn);
  if (m_Row.IsNull() || !m_Row.DataIsPresent(field)) return false;
  handle = m_Row.ReadFieldHandle(field);
  return true;
}

int rom_MementoRead::CollectionColumns() const {
  if (!m_Row.FieldIsPresent(kColumns) || !m_Row.DataIsPresent(kColumns)) return kDefaultColumns;
  int const columns = m_Row.ReadFieldInt(kColumns);
  if (columns < 1)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kBadColumns), typ_ArchCompTable::GetName(m_Cid), Oid(),
                                          m_Transporter->FileName(), columns));
  return columns;
}

template <class Reader>
Reader* rom_MementoRead::MakeReader() {
  rfm_Handle handle;
  if (!CollectionHandle(handle, kRomTargetHandleColumn)) return nullptr;
  return new Reader(*m_Transporter, handle, CollectionColumns());
}

template <class Agent>
Agent* rom_MementoRead::MakeAgent() {
  rfm_Handle handle;
  if (!CollectionHandle(handle, kRomTargetHandleColumn)) return nullptr;
  return new Agent(*m_Transporter, Oid(), handle, CollectionColumns());
}

cls_ReadListObj* rom_MementoRead::MakeReadListObj() { return MakeReader<rom_ReadListObj>(); }

cls_ReadListPrim<int>* rom_MementoRead::MakeReadListPrim(int const&) {
  return MakeReader<rom_ReadListPrim<int, rom_ArrayInt>>();
}

cls_ReadListPrim<unsigned int>* rom_MementoRead::MakeReadListPrim(unsigned int const&) {
  return MakeReader<rom_ReadListPrim<unsigned int, rom_ArrayUint>>();
}

cls_ReadListPrim<double>* rom_MementoRead::MakeReadListPrim(double const&) {
  return MakeReader<rom_ReadListPrim<double, rom_ArrayDouble>>();
}

cls_ReadListPrim<float>* rom_MementoRead::MakeReadListPrim(float const&) {
  return MakeReader<rom_ReadListPrim<float, rom_ArrayFloat>>();
}

cls_ReadListPrim<cow_String>* rom_MementoRead::MakeReadListPrim(cow_String const&) {
  return MakeReader<rom_ReadListPrim<cow_String, rom_ArrayString>>();
}

cls_ReadListPrim<bool>* rom_MementoRead::MakeReadListPrim(bool const&) {
  return MakeReader<rom_ReadListPrim<bool, rom_ArrayBool>>();
}

template <class Reader>
Reader* rom_MementoRead::MakeMapReader(int handleColumn) {
  rfm_Handle handle;
  if (!CollectionHandle(handle, handleColumn)) return nullptr;
  return new Reader(*m_Transporter, handle);
}

// An agent of a list or map of objects, which keeps no column count.
template <class Agent>
Agent* rom_MementoRead::MakeObjectAgent() {
  rfm_Handle handle;
  if (!CollectionHandle(handle, kRomTargetHandleColumn)) return nullptr;
  return new Agent(*m_Transporter, Oid(), handle);
}

cls_AgentListObj* rom_MementoRead::MakeAgentListObj() { return MakeObjectAgent<rom_AgentListObj>(); }

cls_AgentListPrim<bool>* rom_MementoRead::MakeAgentListBool() {
  return MakeAgent<rom_AgentListPrim<bool, rom_ArrayBool>>();
}

cls_AgentListPrim<double>* rom_MementoRead::MakeAgentListDouble() {
  return MakeAgent<rom_AgentListPrim<double, rom_ArrayDouble>>();
}

cls_AgentListPrim<float>* rom_MementoRead::MakeAgentListFloat() {
  return MakeAgent<rom_AgentListPrim<float, rom_ArrayFloat>>();
}

cls_AgentListPrim<int>* rom_MementoRead::MakeAgentListInt() { return MakeAgent<rom_AgentListPrim<int, rom_ArrayInt>>(); }

cls_AgentListPrim<cow_String>* rom_MementoRead::MakeAgentListString() {
  return MakeAgent<rom_AgentListPrim<cow_String, rom_ArrayString>>();
}

cls_AgentListPrim<unsigned int>* rom_MementoRead::MakeAgentListUint() {
  return MakeAgent<rom_AgentListPrim<unsigned int, rom_ArrayUint>>();
}

cls_AgentBlob* rom_MementoRead::MakeAgentBlob() {
  rfm_Handle handle;
  if (!CollectionHandle(handle, kRomTargetHandleColumn)) return nullptr;
  return new rom_AgentBlob(*m_Transporter, handle);
}

cls_ReadMapInt2Obj* rom_MementoRead::MakeReadMapInt2Obj() {
  return MakeMapReader<rom_ReadMapInt2Obj>(kRomTargetHandleColumn);
}

cls_ReadMapInt2Obj* rom_MementoRead::MakeAltReadMapInt2Obj() {
  return MakeMapReader<rom_ReadMapInt2Obj>(kRomTargetHandle2Column);
}

cls_ReadMapKey2Obj<cow_String>* rom_MementoRead::MakeReadMapString2Obj() {
  return MakeMapReader<rom_ReadMapString2Obj>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<int, double>* rom_MementoRead::MakeReadMapInt2Prim(double const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<double, rom_ArrayInt2Double>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<int, float>* rom_MementoRead::MakeReadMapInt2Prim(float const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<float, rom_ArrayInt2Float>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<int, int>* rom_MementoRead::MakeReadMapInt2Prim(int const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<int, rom_ArrayInt2Int>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<int, cow_String>* rom_MementoRead::MakeReadMapInt2Prim(cow_String const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<cow_String, rom_ArrayInt2String>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<int, unsigned int>* rom_MementoRead::MakeReadMapInt2Prim(unsigned int const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<unsigned int, rom_ArrayInt2Uint>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<int, double>* rom_MementoRead::MakeAltReadMapInt2Prim(double const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<double, rom_ArrayInt2Double>>(kRomTargetHandle2Column);
}

cls_ReadMapKey2Prim<int, float>* rom_MementoRead::MakeAltReadMapInt2Prim(float const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<float, rom_ArrayInt2Float>>(kRomTargetHandle2Column);
}

cls_ReadMapKey2Prim<int, int>* rom_MementoRead::MakeAltReadMapInt2Prim(int const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<int, rom_ArrayInt2Int>>(kRomTargetHandle2Column);
}

cls_ReadMapKey2Prim<int, cow_String>* rom_MementoRead::MakeAltReadMapInt2Prim(cow_String const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<cow_String, rom_ArrayInt2String>>(kRomTargetHandle2Column);
}

cls_ReadMapKey2Prim<int, unsigned int>* rom_MementoRead::MakeAltReadMapInt2Prim(unsigned int const&) {
  return MakeMapReader<rom_ReadMapInt2Prim<unsigned int, rom_ArrayInt2Uint>>(kRomTargetHandle2Column);
}

cls_ReadMapKey2Prim<cow_String, double>* rom_MementoRead::MakeReadMapString2Prim(double const&) {
  return MakeMapReader<rom_ReadMapString2Prim<double, rom_ArrayString2Double>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<cow_String, float>* rom_MementoRead::MakeReadMapString2Prim(float const&) {
  return MakeMapReader<rom_ReadMapString2Prim<float, rom_ArrayString2Float>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<cow_String, int>* rom_MementoRead::MakeReadMapString2Prim(int const&) {
  return MakeMapReader<rom_ReadMapString2Prim<int, rom_ArrayString2Int>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<cow_String, cow_String>* rom_MementoRead::MakeReadMapString2Prim(cow_String const&) {
  return MakeMapReader<rom_ReadMapString2Prim<cow_String, rom_ArrayString2String>>(kRomTargetHandleColumn);
}

cls_ReadMapKey2Prim<cow_String, unsigned int>* rom_MementoRead::MakeReadMapString2Prim(unsigned int const&) {
  return MakeMapReader<rom_ReadMapString2Prim<unsigned int, rom_ArrayString2Uint>>(kRomTargetHandleColumn);
}

cls_ReadIntTableInt* rom_MementoRead::MakeReadIntTableInt(int const&) {
  return MakeMapReader<rom_ReadIntTableInt>(kRomTargetHandleColumn);
}

cls_ReadIntTableInt* rom_MementoRead::MakeAltReadIntTableInt(int const&) {
  return MakeMapReader<rom_ReadIntTableInt>(kRomTargetHandle2Column);
}

cls_AgentMapKey2Obj<int>* rom_MementoRead::MakeAgentMapInt2Obj() {
  return MakeObjectAgent<rom_AgentMapKey2Obj<int>>();
}

cls_AgentMapKey2Obj<cow_String>* rom_MementoRead::MakeAgentMapString2Obj() {
  return MakeObjectAgent<rom_AgentMapKey2Obj<cow_String>>();
}
