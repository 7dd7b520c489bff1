// The mementos' part in lazily held objects: the read memento makes the
// proxy, the write memento hands a proxy its field.
#include "cls_FieldHandle.h"
#include "cls_StorageType.h"
#include "rom_AgentProxy.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"
#include "rom_StorageTypeTag.h"
#include "rom_Transporter.h"

cls_AgentProxy* rom_MementoRead::MakeAgentProxy(cls_FieldHandle const& field, unsigned int cid) {
  unsigned int stored = cls_kNoClass;
  int oid = -1;
  if (!ReadReference(field, stored, oid) || oid < 0) return new rom_AgentProxy(*m_Transporter, cid, cls_kNoClass, -1);
  // Checked while the owner is read, as a member read at once is: a file
  // whose reference names a class of another hierarchy fails here, not at
  // some later Load. Only the class metadata is asked; no row is read.
  m_Transporter->CheckInheritence(stored, cid);
  return new rom_AgentProxy(*m_Transporter, cid, stored, oid);
}

bool rom_MementoWrite::CopyBranch(cls_AgentProxy* proxy, cls_FieldHandle const& field) {
  return proxy->Transfer(cls_StorageType<rom_StorageTypeTag>::Id(), this, field);
}
