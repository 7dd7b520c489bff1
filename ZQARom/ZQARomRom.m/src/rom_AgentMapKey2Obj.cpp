#include "rom_AgentMapKey2Obj.h"

#include "ZQABasAssert.h"
#include "cls_Static.h"
#include "rfm_Row.h"
#include "rom_ElementReference.h"
#include "rom_HeaderLayout.h"
#include "rom_MapObj.h"
#include "rom_MapStore.h"
#include "rom_MementoWrite.h"
#include "rom_Transporter.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_AgentMapKey2Obj";

rfm_FieldHandle const kOidColumn(0);

// Whether an entry's row holds an object: a non-negative object id.
bool HoldsObject(rfm_Row const& row) { return row.DataIsPresent(kOidColumn) && row.ReadFieldInt(kOidColumn) >= 0; }
}  // namespace

template <class K>
rom_AgentMapKey2Obj<K>::rom_AgentMapKey2Obj(rom_Transporter& transporter, int oid, rfm_Handle const& handle)
    : m_Transporter(&transporter),
      m_Table(rom_MapStore::OpenTable(transporter, handle, rom_MapAgentQuantum())),
      m_Key(rom_MapStore::ObjectKeyField(transporter, m_Table, rom_MapField<K>::kType)),
      m_Oid(oid),
      m_Walk(m_StatMap) {
  LoadStatMap();
}

template <class K>
rom_AgentMapKey2Obj<K>::rom_AgentMapKey2Obj(rom_Transporter& transporter, int oid)
    : m_Transporter(&transporter),
      m_Table(rom_MapStore::NewTable(transporter, TableName(), rom_MapAgentQuantum())),
      m_Key(rom_MapStore::ObjectKeyField(transporter, m_Table, rom_MapField<K>::kType)),
      m_Oid(oid),
      m_Walk(m_StatMap) {}

template <class K>
char const* rom_AgentMapKey2Obj<K>::TableName() {
  return rom_MapObjLayout<K>::Table();
}

template <class K>
void rom_AgentMapKey2Obj<K>::LoadStatMap() {
  m_Table.Seek(0);
  while (m_Table.RowExists(-1)) {
    rfm_Row const row = m_Table.ReadRow(-1);
    K const key = rom_MapField<K>::Read(row, m_Key);
    rom_AgentMapKey2ObjStat const loaded{0, row.Location(), HoldsObject(row)};
    if (!m_StatMap.IsMember(key)) {
      m_StatMap.Insert(key, loaded);
      continue;
    }
    rom_AgentMapKey2ObjStat& stat = m_StatMap.Get(key);
    if (!stat.m_Present) stat = loaded;
  }
}

template <class K>
int rom_AgentMapKey2Obj<K>::Snap() {
  if (m_Table.Snap() == 0) return 0;
  LoadStatMap();
  return 1;
}

template <class K>
cls_CowValue const& rom_AgentMapKey2Obj<K>::Get(K const& key, unsigned int cid) {
  // A key the index lacks reads the row its null entry names.
  rfm_Row const row = m_Table.ReadRow(m_StatMap.ConstGet(key).m_Row);
  unsigned int stored = kRomNoClass;
  int oid = -1;
  if (!rom_ElementReference::Read(row, stored, oid)) return cls_Static::ConstIntCOW();
  return m_Transporter->CheckReadObjCow(oid, stored, cid);
}

template <class K>
bool rom_AgentMapKey2Obj<K>::DoWrite(K const& key) const {
  if (!m_StatMap.IsMember(key)) return true;
  rom_AgentMapKey2ObjStat const& stat = m_StatMap.ConstGet(key);
  return stat.m_Dirty != 0 || !stat.m_Present;
}

template <class K>
bool rom_AgentMapKey2Obj<K>::Present(K const& key) const {
  return m_StatMap.IsMember(key) && m_StatMap.ConstGet(key).m_Present;
}

template <class K>
void rom_AgentMapKey2Obj<K>::SetDirty(K const& key) {
  if (m_StatMap.IsMember(key)) m_StatMap.Get(key).m_Dirty = 1;
}

template <class K>
rfm_Row rom_AgentMapKey2Obj<K>::EntryRow(K const& key) {
  if (!m_StatMap.IsMember(key)) {
    rfm_Row const row = m_Table.NewRow();
    rom_MapField<K>::Write(row, m_Key, key);
    m_StatMap.Insert(key, rom_AgentMapKey2ObjStat{0, row.Location(), true});
    return row;
  }
  rom_AgentMapKey2ObjStat& stat = m_StatMap.Get(key);
  // A removed key's row is not written again until a Snap or a new agent
  // has found a later row for it.
  if (!stat.m_Present) nex_ThrowAssertion(kSourcePath, __LINE__, "statMap.m_Present");
  stat.m_Dirty = 0;
  return m_Table.UpdateRow(stat.m_Row);
}

template <class K>
cls_MementoWrite* rom_AgentMapKey2Obj<K>::MakeWriteObj(K const& key, unsigned int cid, cls_Uid const& uid,
                                                      cls_CowValue const* cow) {
  rfm_Row row = EntryRow(key);
  return m_Transporter->MakeRefMemento(row, cid, uid, cow);
}

template <class K>
cls_MementoWrite* rom_AgentMapKey2Obj<K>::MakeWriteObjWithPtr(K const& key, unsigned int cid, cls_Uid const& uid,
                                                             void const* ptr) {
  if (ptr == nullptr) return MakeWriteObj(key, cid, uid, nullptr);
  rfm_Row row = EntryRow(key);
  return m_Transporter->MakeRefMementoWithPtr(row, cid, uid, ptr);
}

template <class K>
void rom_AgentMapKey2Obj<K>::Remove(K const& key) {
  if (!m_StatMap.IsMember(key)) return;
  rom_AgentMapKey2ObjStat& stat = m_StatMap.Get(key);
  stat.m_Present = false;
  rom_ElementReference::WriteNull(m_Table.UpdateRow(stat.m_Row));
}

template <class K>
void rom_AgentMapKey2Obj<K>::Release() const {
  m_Transporter->CowBarn().Clear();
}

template <class K>
bool rom_AgentMapKey2Obj<K>::ReadOnly() const {
  return m_Transporter->Database().ReadOnly();
}

template <class K>
void rom_AgentMapKey2Obj<K>::RegisterPC(cls_PC* container) const {
  m_Transporter->RegisterPC(container);
}

template class rom_AgentMapKey2Obj<int>;
template class rom_AgentMapKey2Obj<cow_String>;
