#ifndef cls_Uid_h
#define cls_Uid_h

#include "ZQABasExport.h"

class cls_HistoryEntry;
class cls_UidCatalogEntry;

// An object's identity in memory: a counted reference to a catalogue entry.
// Copies name the same object; a default Uid is null and names none. An
// application keeps one in each persistent object and hands it to
// StartWrite; the object layer links the rows that stand for the object in
// its open databases to the identity's ring (see cls_UidCatalogEntry).
//
// The entry pointer is mutable so that NewUid can give a value a new
// identity through the const reference StartWrite passes down: the object
// layer does so when one identity appears twice in one write pass.
// Counts are plain integers: a Uid and its copies live on one thread.
class ZQA_EXPORT cls_Uid {
public:
  cls_Uid() noexcept = default;
  // Names entry (which may be null); a new entry comes from `new`.
  explicit cls_Uid(cls_UidCatalogEntry* entry);
  cls_Uid(cls_Uid const& other);
  cls_Uid& operator=(cls_Uid const& other);
  ~cls_Uid();

  // This value names a new identity; its copies keep the old one.
  void AllocateUid() { NewUid(); }
  void NewUid() const;

  bool IsNull() const { return m_Entry == nullptr; }
  cls_UidCatalogEntry* CatalogEntry() const { return m_Entry; }
  bool operator==(cls_Uid const& other) const { return m_Entry == other.m_Entry; }
  bool operator!=(cls_Uid const& other) const { return m_Entry != other.m_Entry; }

  // The history entries of this identity. An object gets its identity when
  // a database first stores it: linking an entry to a null Uid first gives
  // it a new one. A null Uid has no entries.
  void LinkHistoryEntry(cls_HistoryEntry* entry) const;
  cls_HistoryEntry* FirstHistoryEntry() const;
  cls_HistoryEntry* NextHistoryEntry(cls_HistoryEntry const* entry) const;

private:
  // Names entry instead of the current one. The old one is released last:
  // the destructors of its ring's members see this value already changed.
  void Assign(cls_UidCatalogEntry* entry) const;

  mutable cls_UidCatalogEntry* m_Entry = nullptr;
};

#endif
