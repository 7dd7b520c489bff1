#ifndef cls_HistoryEntry_h
#define cls_HistoryEntry_h

#include "ZQABasExport.h"

// A row that stands for an object in one open database, as a node of the
// ring that the object's identity (cls_UidCatalogEntry) holds: the object
// layer derives its own entries from it and finds "its" entry of an identity
// by walking the ring (cls_Uid::FirstHistoryEntry, NextHistoryEntry).
//
// Invariant: a node is in exactly one ring; alone, it is its own neighbour.
// A node leaves its ring when it is destroyed.
class ZQA_EXPORT cls_HistoryEntry {
public:
  cls_HistoryEntry() = default;
  cls_HistoryEntry(cls_HistoryEntry const&) = delete;
  cls_HistoryEntry& operator=(cls_HistoryEntry const&) = delete;
  virtual ~cls_HistoryEntry();

  // Joins the ring that ring is in, right after it, leaving any ring this
  // node was in.
  void Link(cls_HistoryEntry* ring);
  void UnLink();
  bool IsLinked() const { return m_Next != this; }
  cls_HistoryEntry* Next() const { return m_Next; }

private:
  cls_HistoryEntry* m_Next = this;
  cls_HistoryEntry* m_Prev = this;
};

#endif
