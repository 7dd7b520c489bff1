#ifndef cls_UidCatalogEntry_h
#define cls_UidCatalogEntry_h

#include "ZQABasExport.h"
#include "cls_HistoryEntry.h"

// The identity of one object in memory, independent of any database: what
// every cls_Uid naming the object shares. It holds the ring of history
// entries, one per open database that knows the object.
//
// Invariant: m_References counts the cls_Uid values that name this entry.
// When it drops to 0 the entry deletes the ring's members and then itself.
// A member's destructor may run code of the object layer, which may build a
// cls_Uid on this entry, delete other members, or keep a cls_Uid: while the
// ring is being emptied a count that comes back to 0 does not start a second
// teardown, and a count still above 0 at the end keeps the entry, with
// whatever members remain, for the Uid that was kept.
class ZQA_EXPORT cls_UidCatalogEntry {
public:
  cls_UidCatalogEntry() = default;
  cls_UidCatalogEntry(cls_UidCatalogEntry const&) = delete;
  cls_UidCatalogEntry& operator=(cls_UidCatalogEntry const&) = delete;

  int References() const { return m_References; }

  // Puts entry in this identity's ring.
  void LinkHistoryEntry(cls_HistoryEntry* entry) { entry->Link(&m_Ring); }
  // The ring's members in order, null past the last.
  cls_HistoryEntry* FirstHistoryEntry() const { return Member(m_Ring.Next()); }
  cls_HistoryEntry* NextHistoryEntry(cls_HistoryEntry const* entry) const { return Member(entry->Next()); }

private:
  friend class cls_Uid;

  // Only RemoveReference ends an entry, after its ring is empty.
  ~cls_UidCatalogEntry() = default;

  void AddReference() { ++m_References; }
  void RemoveReference();
  cls_HistoryEntry* Member(cls_HistoryEntry* node) const { return node == &m_Ring ? nullptr : node; }

  // The ring's head: not an entry of any database, never deleted by the ring.
  cls_HistoryEntry m_Ring;
  int m_References = 0;
  bool m_Ending = false;
};

#endif
