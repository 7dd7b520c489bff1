#include "rom_ListObj.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "cls_AttributeType.h"
#include "cls_Static.h"
#include "rfm_FieldHandle.h"
#include "rom_ElementReference.h"
#include "rom_ExtentQuanta.h"
#include "rom_HeaderLayout.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_Transporter.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_ListObj";

char const kNotAvailable[] = "rom_ReadListObj::MakeReadObj - Object is not available in DB file.";

// A "##List" row: the object id, then the class id.
rfm_FieldHandle const kOidColumn(0);
rfm_FieldHandle const kClassIdColumn(1);

int Quantum() { return rom_ExtentQuantum(kRomQuantumColList, kRomColListQuantumDefault); }

rfm_Table NewListTable(rom_Transporter& transporter) {
  rfm_Table table = transporter.Database().Table(cow_String(kRomListTableName), Quantum(), -1);
  table.Flush();
  return table;
}

}  // namespace

rom_WriteListObj::rom_WriteListObj(rom_Transporter& transporter)
    : m_Transporter(&transporter), m_Table(NewListTable(transporter)) {}

rom_WriteListObj::rom_WriteListObj(rom_Transporter& transporter, rfm_Handle const& handle)
    : m_Transporter(&transporter), m_Table(transporter.Database().Table(handle, Quantum(), -1)) {
  m_Table.Truncate(0);
}

cls_MementoWrite* rom_WriteListObj::MakeWriteObj(unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) {
  rfm_Row row = m_Table.NewRow();
  return m_Transporter->MakeRefMemento(row, cid, uid, cow);
}

cls_MementoWrite* rom_WriteListObj::MakeWriteObjWithPtr(unsigned int cid, cls_Uid const& uid, void const* ptr) {
  if (ptr == nullptr) return MakeWriteObj(cid, uid, nullptr);
  rfm_Row row = m_Table.NewRow();
  return m_Transporter->MakeRefMementoWithPtr(row, cid, uid, ptr);
}

void rom_WriteListObj::MakeNullObj(unsigned int) { m_Table.NewRow(); }

rom_ReadListObj::rom_ReadListObj(rom_Transporter& transporter, rfm_Handle const& handle, int columns)
    : m_Transporter(&transporter), m_Table(transporter.Database().Table(handle, Quantum(), -1)), m_Columns(columns) {
  m_Table.Seek(0);
}

bool rom_ReadListObj::Next() {
  m_Current.Nullify();
  if (!m_Table.RowExists(-1)) return false;
  m_Current = m_Table.ReadRow(-1);
  return true;
}

void* rom_ReadListObj::ReadObjPtr(unsigned int cid) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!rom_ElementReference::Read(m_Current, stored, oid)) return nullptr;
  return m_Transporter->CheckReadObjPtr(oid, stored, cid);
}

cls_CowValue const& rom_ReadListObj::ReadObjCow(unsigned int cid) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!rom_ElementReference::Read(m_Current, stored, oid)) return cls_Static::ConstIntCOW();
  return m_Transporter->CheckReadObjCow(oid, stored, cid);
}

cls_MementoRead* rom_ReadListObj::MakeReadObj() {
  if (!rom_ElementReference::BothPresent(m_Current)) nex_ThrowMessage(kSourcePath, __LINE__, atr_translate(kNotAvailable));
  int const oid = m_Current.ReadFieldInt(kOidColumn);
  if (oid < 0) return nullptr;
  unsigned int const cid = static_cast<unsigned int>(m_Current.ReadFieldInt(kClassIdColumn));
  return new rom_MementoRead(*m_Transporter, cid, oid, m_Transporter->History().RowIdentity(cid, oid));
}

rom_AgentListObj::rom_AgentListObj(rom_Transporter& transporter, int oid, rfm_Handle const& handle)
    : m_Transporter(&transporter), m_Table(transporter.Database().Table(handle, Quantum(), -1)), m_Oid(oid) {
  while (m_Table.RowExists(-1)) {
    m_Table.ReadRow(-1);
    m_Dirty.Append(0);
  }
}

rom_AgentListObj::rom_AgentListObj(rom_Transporter& transporter, int oid)
    : m_Transporter(&transporter), m_Table(NewListTable(transporter)), m_Oid(oid) {}

cls_CowValue const& rom_AgentListObj::Get(int index, unsigned int cid) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!rom_ElementReference::Read(m_Table.ReadRow(index), stored, oid)) return cls_Static::ConstIntCOW();
  return m_Transporter->CheckReadObjCow(oid, stored, cid);
}

int rom_AgentListObj::Snap() {
  if (m_Table.Snap() == 0) return 0;
  // The flags grow by the table's whole length, not by the count of rows
  // that are new: an agent that snaps in rows holds more flags than rows.
  m_Table.Seek(m_Dirty.Length());
  int const length = m_Table.Length();
  for (int i = 0; i < length; ++i) m_Dirty.Append(0);
  return 1;
}

bool rom_AgentListObj::DoWrite(int index) { return index >= m_Dirty.Length() || m_Dirty.ConstGet(index) != 0; }

void rom_AgentListObj::SetDirty(int index) {
  if (index >= 0 && index < m_Dirty.Length()) m_Dirty.Put(index, 1);
}

rfm_Row rom_AgentListObj::ElementRow(int index) {
  if (index >= m_Dirty.Length()) {
    rfm_Row row = m_Table.NewRow();
    m_Dirty.Append(0);
    return row;
  }
  rfm_Row row = m_Table.UpdateRow(index);
  m_Dirty.Put(index, 0);
  return row;
}

cls_MementoWrite* rom_AgentListObj::MakeWriteObj(int index, unsigned int cid, cls_Uid const& uid,
                                                 cls_CowValue const* cow) {
  rfm_Row row = ElementRow(index);
  return m_Transporter->MakeRefMemento(row, cid, uid, cow);
}

cls_MementoWrite* rom_AgentListObj::MakeWriteObjWithPtr(int index, unsigned int cid, cls_Uid const& uid,
                                                        void const* ptr) {
  if (ptr == nullptr) return MakeWriteObj(index, cid, uid, nullptr);
  rfm_Row row = ElementRow(index);
  return m_Transporter->MakeRefMementoWithPtr(row, cid, uid, ptr);
}

void rom_AgentListObj::Release() const { m_Transporter->CowBarn().Clear(); }

bool rom_AgentListObj::ReadOnly() const { return m_Transporter->Database().ReadOnly(); }

void rom_AgentListObj::RegisterPC(cls_PC* container) const { m_Transporter->RegisterPC(container); }
