#include "cls_HistoryEntry.h"

cls_HistoryEntry::~cls_HistoryEntry() { UnLink(); }

void cls_HistoryEntry::Link(cls_HistoryEntry* ring) {
  if (ring == this) return;
  UnLink();
  m_Prev = ring;
  m_Next = ring->m_Next;
  ring->m_Next->m_Prev = this;
  ring->m_Next = this;
}

void cls_HistoryEntry::UnLink() {
  m_Prev->m_Next = m_Next;
  m_Next->m_Prev = m_Prev;
  m_Next = this;
  m_Prev = this;
}
