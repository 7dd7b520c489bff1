// The write memento's collections: the writers and agents of the list, map
// or blob that its row, a row of a collection class, holds.
#include "ZQABasAssert.h"
#include "cls_FieldHandle.h"
#include "rom_AgentBlob.h"
#include "rom_ArrayNumber.h"
#include "rom_ArrayString.h"
#include "rom_ClassBag.h"
#include "rom_HeaderLayout.h"
#include "rom_ListObj.h"
#include "rom_ListPrim.h"
#include "rom_AgentMapKey2Obj.h"
#include "rom_MapObj.h"
#include "rom_MapPrim.h"
#include "rom_MementoWrite.h"
#include "rom_Transporter.h"

#include <memory>

namespace {
rfm_FieldHandle const kColumns(kRomTargetColumnsColumn);

// A row's object id and class id in a reference's columns.
bool StoredReference(rfm_Row const& row, rfm_FieldHandle const& oid, rfm_FieldHandle const& classId,
                     rom_CidOid& stored) {
  if (!row.DataIsPresent(oid) || !row.DataIsPresent(classId)) return false;
  stored = rom_CidOid(static_cast<unsigned int>(row.ReadFieldInt(classId)), row.ReadFieldInt(oid));
  return true;
}

// The store that a collection row's handle (in column handleColumn) names,
// opened by open, or one made by make, whose handle the row then takes; a
// list's column count, unless kNoColumns, goes to the row either way.
constexpr int kNoColumns = -1;

template <class Made, class Open, class Make>
Made* OpenOrMake(rfm_Row const& row, Open const& open, Make const& make, int columns,
                 int handleColumn = kRomTargetHandleColumn) {
  rfm_FieldHandle const handle(handleColumn);
  std::unique_ptr<Made> made;
  if (row.DataIsPresent(handle)) {
    made = open(row.ReadFieldHandle(handle));
  } else {
    made = make();
    row.WriteFieldHandle(handle, made->Handle());
  }
  if (columns != kNoColumns) row.WriteFieldInt(kColumns, columns);
  return made.release();
}
}  // namespace

rom_MementoWrite* rom_MementoWrite::ExistingCollection(cls_FieldHandle const& field, unsigned int cid) {
  if (m_Row.IsNull() || !rom_IsInternalClass(cid)) return nullptr;
  rfm_FieldHandle oid(-1), classId(-1);
  m_Bag->ReferenceColumns(field, oid, classId);
  if (!m_Row.FieldIsPresent(oid) || !m_Row.FieldIsPresent(classId)) return nullptr;
  rom_CidOid stored;
  if (!StoredReference(m_Row, oid, classId, stored) || stored.m_Cid != cid) return nullptr;
  rom_ClassBag const& bag = m_Transporter->GetClassBagForWrite(cid);
  if (!bag.HasTable() || stored.m_Oid < 0 || stored.m_Oid >= bag.Table().Length()) return nullptr;
  m_LastReference = stored;
  return new rom_MementoWrite(*m_Transporter, cid, stored.m_Oid);
}

// A writer empties a list the row holds already.
template <class Writer>
Writer* rom_MementoWrite::MakeWriter(int columns, int handleColumn) {
  if (m_Row.IsNull()) return nullptr;
  rom_Transporter& transporter = *m_Transporter;
  return OpenOrMake<Writer>(
      m_Row, [&](rfm_Handle const& handle) { return std::make_unique<Writer>(transporter, handle); },
      [&] { return std::make_unique<Writer>(transporter); }, columns, handleColumn);
}

// An agent is told the row's object id; one opened on a list the row holds
// already empties it once built.
template <class Agent>
Agent* rom_MementoWrite::MakeAgent(int columns) {
  if (m_Row.IsNull()) return nullptr;
  rom_Transporter& transporter = *m_Transporter;
  int const oid = Oid();
  return OpenOrMake<Agent>(
      m_Row,
      [&](rfm_Handle const& handle) {
        auto agent = std::make_unique<Agent>(transporter, oid, handle, columns);
        agent->Clear();
        return agent;
      },
      [&] { return std::make_unique<Agent>(transporter, oid, columns); }, columns);
}

cls_WriteListObj* rom_MementoWrite::MakeWriteListObj(int columns) { return MakeWriter<rom_WriteListObj>(columns, kRomTargetHandleColumn); }

cls_WriteListPrim<int>* rom_MementoWrite::MakeWriteListPrim(int const&, int columns) {
  return MakeWriter<rom_WriteListPrim<int, rom_ArrayInt>>(columns, kRomTargetHandleColumn);
}

cls_WriteListPrim<unsigned int>* rom_MementoWrite::MakeWriteListPrim(unsigned int const&, int columns) {
  return MakeWriter<rom_WriteListPrim<unsigned int, rom_ArrayUint>>(columns, kRomTargetHandleColumn);
}

cls_WriteListPrim<double>* rom_MementoWrite::MakeWriteListPrim(double const&, int columns) {
  return MakeWriter<rom_WriteListPrim<double, rom_ArrayDouble>>(columns, kRomTargetHandleColumn);
}

cls_WriteListPrim<float>* rom_MementoWrite::MakeWriteListPrim(float const&, int columns) {
  return MakeWriter<rom_WriteListPrim<float, rom_ArrayFloat>>(columns, kRomTargetHandleColumn);
}

cls_WriteListPrim<cow_String>* rom_MementoWrite::MakeWriteListPrim(cow_String const&, int columns) {
  return MakeWriter<rom_WriteListPrim<cow_String, rom_ArrayString>>(columns, kRomTargetHandleColumn);
}

cls_WriteListPrim<bool>* rom_MementoWrite::MakeWriteListPrim(bool const&, int columns) {
  return MakeWriter<rom_WriteListPrim<bool, rom_ArrayBool>>(columns, kRomTargetHandleColumn);
}

// An agent of a list or map of objects, which keeps no column count.
template <class Agent>
Agent* rom_MementoWrite::MakeObjectAgent() {
  if (m_Row.IsNull()) return nullptr;
  rom_Transporter& transporter = *m_Transporter;
  int const oid = Oid();
  return OpenOrMake<Agent>(
      m_Row,
      [&](rfm_Handle const& handle) {
        auto agent = std::make_unique<Agent>(transporter, oid, handle);
        agent->Clear();
        return agent;
      },
      [&] { return std::make_unique<Agent>(transporter, oid); }, kNoColumns);
}

cls_AgentListObj* rom_MementoWrite::MakeAgentListObj() { return MakeObjectAgent<rom_AgentListObj>(); }

cls_AgentListPrim<bool>* rom_MementoWrite::MakeAgentListBool(int columns) {
  return MakeAgent<rom_AgentListPrim<bool, rom_ArrayBool>>(columns);
}

cls_AgentListPrim<double>* rom_MementoWrite::MakeAgentListDouble(int columns) {
  return MakeAgent<rom_AgentListPrim<double, rom_ArrayDouble>>(columns);
}

cls_AgentListPrim<float>* rom_MementoWrite::MakeAgentListFloat(int columns) {
  return MakeAgent<rom_AgentListPrim<float, rom_ArrayFloat>>(columns);
}

cls_AgentListPrim<int>* rom_MementoWrite::MakeAgentListInt(int columns) {
  return MakeAgent<rom_AgentListPrim<int, rom_ArrayInt>>(columns);
}

cls_AgentListPrim<cow_String>* rom_MementoWrite::MakeAgentListString(int columns) {
  return MakeAgent<rom_AgentListPrim<cow_String, rom_ArrayString>>(columns);
}

cls_AgentListPrim<unsigned int>* rom_MementoWrite::MakeAgentListUint(int columns) {
  return MakeAgent<rom_AgentListPrim<unsigned int, rom_ArrayUint>>(columns);
}

cls_AgentBlob* rom_MementoWrite::MakeAgentBlob() {
  if (m_Row.IsNull()) return nullptr;
  rom_Transporter& transporter = *m_Transporter;
  // A blob the row holds already keeps its bytes.
  return OpenOrMake<rom_AgentBlob>(
      m_Row, [&](rfm_Handle const& handle) { return std::make_unique<rom_AgentBlob>(transporter, handle); },
      [&] { return std::make_unique<rom_AgentBlob>(transporter); }, kNoColumns);
}

cls_WriteMapKey2Obj<int>* rom_MementoWrite::MakeWriteMapInt2Obj() {
  return MakeWriter<rom_WriteMapInt2Obj>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Obj<int>* rom_MementoWrite::MakeAltWriteMapInt2Obj() {
  return MakeWriter<rom_WriteMapInt2Obj>(kNoColumns, kRomTargetHandle2Column);
}

cls_WriteMapKey2Obj<cow_String>* rom_MementoWrite::MakeWriteMapString2Obj() {
  return MakeWriter<rom_WriteMapString2Obj>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<int, double>* rom_MementoWrite::MakeWriteMapInt2Prim(double const&) {
  return MakeWriter<rom_WriteMapInt2Prim<double, rom_ArrayInt2Double>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<int, float>* rom_MementoWrite::MakeWriteMapInt2Prim(float const&) {
  return MakeWriter<rom_WriteMapInt2Prim<float, rom_ArrayInt2Float>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<int, int>* rom_MementoWrite::MakeWriteMapInt2Prim(int const&) {
  return MakeWriter<rom_WriteMapInt2Prim<int, rom_ArrayInt2Int>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<int, cow_String>* rom_MementoWrite::MakeWriteMapInt2Prim(cow_String const&) {
  return MakeWriter<rom_WriteMapInt2Prim<cow_String, rom_ArrayInt2String>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<int, unsigned int>* rom_MementoWrite::MakeWriteMapInt2Prim(unsigned int const&) {
  return MakeWriter<rom_WriteMapInt2Prim<unsigned int, rom_ArrayInt2Uint>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<int, double>* rom_MementoWrite::MakeAltWriteMapInt2Prim(double const&) {
  return MakeWriter<rom_WriteMapInt2Prim<double, rom_ArrayInt2Double>>(kNoColumns, kRomTargetHandle2Column);
}

cls_WriteMapKey2Prim<int, float>* rom_MementoWrite::MakeAltWriteMapInt2Prim(float const&) {
  return MakeWriter<rom_WriteMapInt2Prim<float, rom_ArrayInt2Float>>(kNoColumns, kRomTargetHandle2Column);
}

cls_WriteMapKey2Prim<int, int>* rom_MementoWrite::MakeAltWriteMapInt2Prim(int const&) {
  return MakeWriter<rom_WriteMapInt2Prim<int, rom_ArrayInt2Int>>(kNoColumns, kRomTargetHandle2Column);
}

cls_WriteMapKey2Prim<int, cow_String>* rom_MementoWrite::MakeAltWriteMapInt2Prim(cow_String const&) {
  return MakeWriter<rom_WriteMapInt2Prim<cow_String, rom_ArrayInt2String>>(kNoColumns, kRomTargetHandle2Column);
}

cls_WriteMapKey2Prim<int, unsigned int>* rom_MementoWrite::MakeAltWriteMapInt2Prim(unsigned int const&) {
  return MakeWriter<rom_WriteMapInt2Prim<unsigned int, rom_ArrayInt2Uint>>(kNoColumns, kRomTargetHandle2Column);
}

cls_WriteMapKey2Prim<cow_String, double>* rom_MementoWrite::MakeWriteMapString2Prim(double const&) {
  return MakeWriter<rom_WriteMapString2Prim<double, rom_ArrayString2Double>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<cow_String, float>* rom_MementoWrite::MakeWriteMapString2Prim(float const&) {
  return MakeWriter<rom_WriteMapString2Prim<float, rom_ArrayString2Float>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<cow_String, int>* rom_MementoWrite::MakeWriteMapString2Prim(int const&) {
  return MakeWriter<rom_WriteMapString2Prim<int, rom_ArrayString2Int>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<cow_String, cow_String>* rom_MementoWrite::MakeWriteMapString2Prim(cow_String const&) {
  return MakeWriter<rom_WriteMapString2Prim<cow_String, rom_ArrayString2String>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteMapKey2Prim<cow_String, unsigned int>* rom_MementoWrite::MakeWriteMapString2Prim(unsigned int const&) {
  return MakeWriter<rom_WriteMapString2Prim<unsigned int, rom_ArrayString2Uint>>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteIntTableInt* rom_MementoWrite::MakeWriteIntTableInt(int const&) {
  return MakeWriter<rom_WriteIntTableInt>(kNoColumns, kRomTargetHandleColumn);
}

cls_WriteIntTableInt* rom_MementoWrite::MakeAltWriteIntTableInt(int const&) {
  return MakeWriter<rom_WriteIntTableInt>(kNoColumns, kRomTargetHandle2Column);
}

cls_AgentMapKey2Obj<int>* rom_MementoWrite::MakeAgentMapInt2Obj() {
  return MakeObjectAgent<rom_AgentMapKey2Obj<int>>();
}

cls_AgentMapKey2Obj<cow_String>* rom_MementoWrite::MakeAgentMapString2Obj() {
  return MakeObjectAgent<rom_AgentMapKey2Obj<cow_String>>();
}
