#ifndef rom_History_h
#define rom_History_h

#include "ZQABasExport.h"
#include "cls_PTrie.h"
#include "cls_Uid.h"
#include "cow_List.h"
#include "rom_CidOid.h"

class rom_HistoryEntry;

// Which object in memory lives in which row of one database: an entry per
// (class id, object id), each also on the ring of its object's identity, so
// that a row leads to its identity and an identity to its row. Entries are
// not stored: a new transporter knows no identities, and reading makes them
// again.
//
// Invariant: m_CidOid2EntryMap holds exactly the live entries whose owner is
// this history, each under its own row. An entry lives while a cls_Uid
// names its identity, or, once made permanent, while the history does.
class ZQA_EXPORT rom_History {
public:
  rom_History() = default;
  rom_History(rom_History const&) = delete;
  rom_History& operator=(rom_History const&) = delete;
  ~rom_History();

  // Null when there is none.
  rom_HistoryEntry* GetEntry(unsigned int cid, int oid) const;
  rom_HistoryEntry* GetEntry(cls_Uid const& uid) const;
  // A new entry for a row that has none yet; a null uid gets an identity.
  rom_HistoryEntry* MakeEntry(cls_Uid const& uid, unsigned int cid, int oid);
  // The same, and the history keeps the identity for as long as it lives.
  rom_HistoryEntry* MakePermanentEntry(cls_Uid const& uid, unsigned int cid, int oid);
  // The identity of the object in the row: its entry's, or a new one
  // entered for it. A row new to the history takes one walk of the map.
  cls_Uid RowIdentity(unsigned int cid, int oid);
  // Forgets the row's entry; an entry calls it as it ends.
  void MapRemove(unsigned int cid, int oid);
  // Every entry counts as not yet written, for the next write record.
  void ClearRecordedState();
  int Size() const { return m_CidOid2EntryMap.Size(); }

private:
  // Makes the entry in the place the map holds for row.
  rom_HistoryEntry* Enter(rom_HistoryEntry*& place, cls_Uid const& uid, rom_CidOid const& row);

  bool m_Destroying = false;
  cls_PTrie<rom_CidOid, rom_HistoryEntry*, 2> m_CidOid2EntryMap;
  cow_List<cls_Uid> m_PermanentUids;
};

#endif
