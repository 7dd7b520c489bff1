#include "rom_FastCopyVisitor.h"

#include "cls_ClassMetadata.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "rfm_Row.h"
#include "rom_CowBarn.h"
#include "rom_History.h"
#include "rom_HistoryEntry.h"
#include "rom_MementoWrite.h"
#include "rom_Transporter.h"
#include "rom_WriteRecord.h"

rom_FastCopyVisitor::rom_FastCopyVisitor(rom_Transporter& source, rom_Transporter& target)
    : m_Source(source), m_Target(target) {}

int rom_FastCopyVisitor::AcceptObjectBeforeCopy(unsigned int cid, int oid) {
  rom_HistoryEntry const* entry = m_Source.History().GetEntry(cid, oid);
  if (entry == nullptr) return -1;
  if (m_Source.CowBarn().IsPresent(cid, oid)) return CopyCow(entry->GetUid(), cid, oid);
  rom_HistoryEntry const* known = m_Target.History().GetEntry(entry->GetUid());
  // An identity is one object, of one class: a row of another class in the
  // target cannot stand for this one.
  return known != nullptr && known->ClassId() == cid ? known->ObjectId() : -1;
}

int rom_FastCopyVisitor::CopyCow(cls_Uid const& uid, unsigned int cid, int oid) {
  rom_HistoryEntry* known = m_Target.History().GetEntry(uid);
  if (known != nullptr && known->ClassId() == cid && m_Target.CowBarn().IsPresent(cid, known->ObjectId()))
    return known->ObjectId();
  rom_CowBarnStall const* stall = m_Source.CowBarn().Stall(cid, oid);
  if (stall == nullptr) return -1;
  cls_CowValue const value = stall->Value();
  // A row the target has for the identity already is written over, as the
  // object layer writes a known object again; else the object takes a new
  // row, and its identity an entry there.
  bool const inPlace = known != nullptr && known->ClassId() == cid;
  rom_MementoWrite memento(m_Target, cid, inPlace ? known->ObjectId() : -1, cls_MementoWrite::kOwnedByCreator);
  m_Target.GetClassMD(cid).DBWrite(value.Address(), cls_WriteVisitor(&memento));
  int const copied = memento.Oid();
  m_Target.CowBarn().Insert(cid, copied, value, m_Target.FindMDWithDtor(cid));
  if (!inPlace) known = m_Target.History().MakePermanentEntry(uid, cid, copied);
  if (rom_WriteRecord* record = m_Target.WriteRecord()) record->Record(known);
  return copied;
}

void rom_FastCopyVisitor::AcceptObjectAfterCopy(rfm_Row& source, rfm_Row& target, unsigned int cid) {
  int const from = source.Location();
  int const to = target.Location();
  rom_HistoryEntry const* entry = m_Source.History().GetEntry(cid, from);
  if (entry == nullptr) entry = m_Source.History().MakePermanentEntry(cls_Uid(), cid, from);
  cls_Uid const uid = entry->GetUid();
  if (m_Target.History().GetEntry(uid) == nullptr) m_Target.History().MakePermanentEntry(uid, cid, to);
}
