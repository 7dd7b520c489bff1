#include "rom_AgentProxy.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ClassMetadata.h"
#include "cls_PC.h"
#include "cls_Static.h"
#include "cls_StorageType.h"
#include "rom_CowBarn.h"
#include "rom_FastCopyVisitor.h"
#include "rom_History.h"
#include "rom_HistoryEntry.h"
#include "rom_MementoWrite.h"
#include "rom_PtrBarn.h"
#include "rom_StorageTypeTag.h"
#include "rom_Transporter.h"
#include "rom_UtlCopy.h"
#include "rom_UtlDatabaseRom.h"
#include "rom_WIPInterface.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_AgentProxy";

char const kCowFailure[] = "rom_AgentProxy::Load - Cow construction failure in class %s";
}  // namespace

rom_AgentProxy::rom_AgentProxy(rom_Transporter& transporter, unsigned int expected, unsigned int stored, int oid)
    : m_Transporter(&transporter), m_Expected(expected), m_Stored(oid < 0 ? cls_kNoClass : stored), m_Oid(oid) {}

bool rom_AgentProxy::IsLoaded() const { return !HasValue() || m_Transporter->CowBarn().IsPresent(m_Stored, m_Oid); }

cls_CowValue rom_AgentProxy::Load() const {
  if (!HasValue()) return cls_Static::ConstIntCOW();
  // Objects held by pointer that the object reaches are built once within
  // this load.
  rom_PtrBarn const barn(*m_Transporter);
  rom_WIPInterface* wip = m_Transporter->WIPInterface();
  if (wip != nullptr) wip->BeginLoad();
  cls_CowValue value;
  try {
    value = m_Transporter->CheckReadObjCow(m_Oid, m_Stored, m_Expected);
  } catch (...) {
    if (wip != nullptr) wip->EndLoad();
    throw;
  }
  if (wip != nullptr) wip->EndLoad();
  // A proxy with a value loads a value: a stored class that builds nothing
  // (an abstract class) fails as an object member read at once does.
  if (!value.HasValue())
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kCowFailure), m_Transporter->GetClassMD(m_Stored).ClassName()));
  return value;
}

cls_Uid rom_AgentProxy::GetUid() const {
  if (!HasValue()) return cls_Static::ConstUid();
  rom_History& history = m_Transporter->History();
  if (rom_HistoryEntry const* entry = history.GetEntry(m_Stored, m_Oid)) return entry->GetUid();
  // Promised without an object to hold it, the identity is kept for the
  // transporter's life: a later read of the row must find the same one.
  cls_Uid uid;
  uid.AllocateUid();
  history.MakePermanentEntry(uid, m_Stored, m_Oid);
  return uid;
}

bool rom_AgentProxy::Transfer(int storageType, cls_MementoWrite* memento, cls_FieldHandle const& field) {
  if (storageType != cls_StorageType<rom_StorageTypeTag>::Id()) return false;
  // The storage kind vouches for the memento's class.
  rom_MementoWrite& target = *static_cast<rom_MementoWrite*>(memento);
  rom_Transporter& into = target.Transporter();
  // Null, or a row of the same database: the reference as it stands.
  if (!HasValue() || &into == m_Transporter) {
    target.Write(field, m_Stored, m_Oid);
    return true;
  }
  // The target knows the object already, as a row of the same class: an
  // identity is one object, so a row of another class cannot stand for it.
  rom_HistoryEntry const* known = into.History().GetEntry(GetUid());
  int const oid = known != nullptr && known->ClassId() == m_Stored ? known->ObjectId() : CopyInto(into);
  target.Write(field, m_Stored, oid);
  Repoint(into, oid);
  return true;
}

int rom_AgentProxy::CopyInto(rom_Transporter& target) const {
  rom_UtlDatabaseRom const from(*m_Transporter);
  rom_UtlDatabaseRom to(target);
  rom_FastCopyVisitor visitor(*m_Transporter, target);
  rom_UtlCopy copy(to);
  copy.SetVisitor(&visitor);
  // A copy that raises leaves the rows it has taken in the target: each of
  // them is whole or holds no data in the fields it had not reached (a
  // reference's two columns are written together, after the object they
  // name has been copied), so the target stays readable. Only objects
  // copied whole get an entry in the target's history; the row of an
  // object cut short is an orphan that nothing refers to and no later
  // transfer finds, and the proxy still stands for its source row.
  return copy.CopyObject(m_Stored, m_Oid, from, false);
}

void rom_AgentProxy::Repoint(rom_Transporter& target, int oid) {
  m_Transporter = &target;
  m_Oid = oid;
  if (m_Container != nullptr) target.RegisterPC(m_Container);
}

void rom_AgentProxy::RegisterPC(cls_PC* container) const {
  m_Container = container;
  m_Transporter->RegisterPC(container);
}
