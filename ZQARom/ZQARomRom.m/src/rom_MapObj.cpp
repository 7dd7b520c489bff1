#include "rom_MapObj.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_Static.h"
#include "rom_ElementReference.h"
#include "rom_ExtentQuanta.h"
#include "rom_HeaderLayout.h"
#include "rom_MapStore.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_Transporter.h"

#include <utility>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_MapObj";

// The readers' message names the reader's class.
template <class K>
char const* NotAvailable();
template <>
char const* NotAvailable<int>() {
  return "rom_ReadMapInt2Obj::MakeReadObj - Object is not available in DB file.";
}
template <>
char const* NotAvailable<cow_String>() {
  return "rom_ReadMapString2Obj::MakeReadObj - Object is not available in DB file.";
}
}  // namespace

char const* rom_MapObjLayout<int>::Table() { return kRomMapInt2ObjTableName; }
int rom_MapObjLayout<int>::Quantum() { return rom_ExtentQuantum(kRomQuantumColMap, kRomColMapIntQuantumDefault); }
char const* rom_MapObjLayout<cow_String>::Table() { return kRomMapTableName; }
int rom_MapObjLayout<cow_String>::Quantum() { return rom_ExtentQuantum(kRomQuantumColMap, kRomColMapQuantumDefault); }
int rom_MapAgentQuantum() { return rom_ExtentQuantum(kRomQuantumColMap, kRomColMapQuantumDefault); }

template <class K>
rom_WriteMapKey2Obj<K>::rom_WriteMapKey2Obj(rom_Transporter& transporter)
    : rom_WriteMapKey2Obj(transporter,
                          rom_MapStore::NewTable(transporter, rom_MapObjLayout<K>::Table(), rom_MapObjLayout<K>::Quantum())) {}

template <class K>
rom_WriteMapKey2Obj<K>::rom_WriteMapKey2Obj(rom_Transporter& transporter, rfm_Handle const& handle)
    : rom_WriteMapKey2Obj(transporter, rom_MapStore::OpenTable(transporter, handle, rom_MapObjLayout<K>::Quantum())) {
  m_Table.Truncate(0);
}

template <class K>
rom_WriteMapKey2Obj<K>::rom_WriteMapKey2Obj(rom_Transporter& transporter, rfm_Table table)
    : m_Transporter(&transporter),
      m_Table(std::move(table)),
      m_Key(rom_MapStore::ObjectKeyField(transporter, m_Table, rom_MapField<K>::kType)) {}

template <class K>
rfm_Row rom_WriteMapKey2Obj<K>::NewEntry(K const& key) {
  rfm_Row row = m_Table.NewRow();
  rom_MapField<K>::Write(row, m_Key, key);
  return row;
}

template <class K>
cls_MementoWrite* rom_WriteMapKey2Obj<K>::MakeWriteObj(K const& key, unsigned int cid, cls_Uid const& uid,
                                                       cls_CowValue const* cow) {
  rfm_Row row = NewEntry(key);
  return m_Transporter->MakeRefMemento(row, cid, uid, cow);
}

template <class K>
cls_MementoWrite* rom_WriteMapKey2Obj<K>::MakeWriteObjWithPtr(K const& key, unsigned int cid, cls_Uid const& uid,
                                                              void const* ptr) {
  if (ptr == nullptr) return MakeWriteObj(key, cid, uid, nullptr);
  rfm_Row row = NewEntry(key);
  return m_Transporter->MakeRefMementoWithPtr(row, cid, uid, ptr);
}

template <class K>
void rom_WriteMapKey2Obj<K>::MakeNullObj(K const& key, unsigned int) {
  NewEntry(key);
}

template <class Base, class K>
rom_ReadMapKey2ObjImpl<Base, K>::rom_ReadMapKey2ObjImpl(rom_Transporter& transporter, rfm_Handle const& handle)
    : m_Transporter(&transporter),
      m_Table(rom_MapStore::OpenTable(transporter, handle, rom_MapObjLayout<K>::Quantum())),
      m_Key(rom_MapStore::ObjectKeyField(transporter, m_Table, rom_MapField<K>::kType)) {
  m_Table.Seek(0);
}

template <class Base, class K>
bool rom_ReadMapKey2ObjImpl<Base, K>::Next() {
  m_Current.Nullify();
  if (!m_Table.RowExists(-1)) return false;
  m_Current = m_Table.ReadRow(-1);
  m_CurrentKey = rom_MapField<K>::Read(m_Current, m_Key);
  return true;
}

template <class Base, class K>
cls_CowValue const& rom_ReadMapKey2ObjImpl<Base, K>::ReadObjCow(unsigned int cid) {
  unsigned int stored = kRomNoClass;
  int oid = -1;
  if (!rom_ElementReference::Read(m_Current, stored, oid)) return cls_Static::ConstIntCOW();
  return m_Transporter->CheckReadObjCow(oid, stored, cid);
}

template <class Base, class K>
cls_MementoRead* rom_ReadMapKey2ObjImpl<Base, K>::MakeReadObj() {
  unsigned int cid = kRomNoClass;
  int oid = -1;
  // A null entry stored as a key alone has no object to read.
  if (!rom_ElementReference::BothPresent(m_Current))
    nex_ThrowMessage(kSourcePath, __LINE__, atr_translate(NotAvailable<K>()));
  if (!rom_ElementReference::Read(m_Current, cid, oid) || oid < 0) return nullptr;
  return new rom_MementoRead(*m_Transporter, cid, oid, m_Transporter->History().RowIdentity(cid, oid));
}

void* rom_ReadMapInt2Obj::ReadObjPtr(unsigned int cid) {
  unsigned int stored = kRomNoClass;
  int oid = -1;
  if (!rom_ElementReference::Read(m_Current, stored, oid)) return nullptr;
  return m_Transporter->CheckReadObjPtr(oid, stored, cid);
}

template class rom_WriteMapKey2Obj<int>;
template class rom_WriteMapKey2Obj<cow_String>;
template class rom_ReadMapKey2ObjImpl<cls_ReadMapInt2Obj, int>;
template class rom_ReadMapKey2ObjImpl<cls_ReadMapString2Obj, cow_String>;
