#include "rom_History.h"

#include "ZQABasAssert.h"
#include "cls_PTrieIter.h"
#include "rom_HistoryEntry.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_History";
}

rom_History::~rom_History() {
  // The entries are taken out of the map before any of them ends, and
  // MapRemove leaves the map alone from here on: the walk sees no change.
  // An entry's end leaves its identity's ring and ends nothing else.
  cls_PTrie<rom_CidOid, rom_HistoryEntry*, 2> entries;
  entries.Swap(m_CidOid2EntryMap);
  m_Destroying = true;
  for (cls_PTrieIter<rom_CidOid, rom_HistoryEntry*, 2> it(entries); !it.IsDone(); it.Next()) delete it.CurrentValue();
}

rom_HistoryEntry* rom_History::GetEntry(unsigned int cid, int oid) const {
  auto const* leaf = m_CidOid2EntryMap.ConstGetPtr(rom_CidOid(cid, oid));
  return leaf != nullptr ? leaf->Value() : nullptr;
}

rom_HistoryEntry* rom_History::GetEntry(cls_Uid const& uid) const {
  // The ring holds an entry for each database that knows the object; this
  // history's is the one it owns.
  for (cls_HistoryEntry* node = uid.FirstHistoryEntry(); node != nullptr; node = uid.NextHistoryEntry(node)) {
    auto* entry = dynamic_cast<rom_HistoryEntry*>(node);
    if (entry != nullptr && entry->Owner() == this) return entry;
  }
  return nullptr;
}

rom_HistoryEntry* rom_History::MakeEntry(cls_Uid const& uid, unsigned int cid, int oid) {
  rom_CidOid const row(cid, oid);
  // The row's place is taken first, in the one walk that tells whether it
  // has an entry: a row that has one raises with nothing changed.
  rom_HistoryEntry** const place = m_CidOid2EntryMap.InsertNew(row, nullptr);
  if (place == nullptr)
    nex_ThrowAssertion(kSourcePath, __LINE__, "!m_CidOid2EntryMap.IsMember(rom_CidOid(cid, oid))");
  return Enter(*place, uid, row);
}

cls_Uid rom_History::RowIdentity(unsigned int cid, int oid) {
  rom_CidOid const row(cid, oid);
  rom_HistoryEntry** const place = m_CidOid2EntryMap.InsertNew(row, nullptr);
  if (place == nullptr) return GetEntry(cid, oid)->GetUid();
  cls_Uid uid;
  uid.AllocateUid();
  Enter(*place, uid, row);
  return uid;
}

rom_HistoryEntry* rom_History::Enter(rom_HistoryEntry*& place, cls_Uid const& uid, rom_CidOid const& row) {
  // An entry that cannot be made gives its place back.
  try {
    place = new rom_HistoryEntry(*this, uid, row);
  } catch (...) {
    m_CidOid2EntryMap.Remove(row);
    throw;
  }
  return place;
}

rom_HistoryEntry* rom_History::MakePermanentEntry(cls_Uid const& uid, unsigned int cid, int oid) {
  rom_HistoryEntry* entry = MakeEntry(uid, cid, oid);
  // After MakeEntry, which gives a null uid its identity: the kept copy
  // names the identity the entry is on.
  m_PermanentUids.Append(entry->GetUid());
  return entry;
}

void rom_History::MapRemove(unsigned int cid, int oid) {
  if (m_Destroying) return;
  m_CidOid2EntryMap.Remove(rom_CidOid(cid, oid));
}

void rom_History::ClearRecordedState() {
  for (cls_PTrieIter<rom_CidOid, rom_HistoryEntry*, 2> it(m_CidOid2EntryMap); !it.IsDone(); it.Next())
    it.CurrentValue()->SetRecorded(false);
}
