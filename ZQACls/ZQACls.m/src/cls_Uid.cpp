#include "cls_Uid.h"

#include "cls_UidCatalogEntry.h"

cls_Uid::cls_Uid(cls_UidCatalogEntry* entry) : m_Entry(entry) {
  if (m_Entry) m_Entry->AddReference();
}

cls_Uid::cls_Uid(cls_Uid const& other) : cls_Uid(other.m_Entry) {}

cls_Uid& cls_Uid::operator=(cls_Uid const& other) {
  Assign(other.m_Entry);
  return *this;
}

cls_Uid::~cls_Uid() { Assign(nullptr); }

void cls_Uid::NewUid() const { Assign(new cls_UidCatalogEntry); }

void cls_Uid::Assign(cls_UidCatalogEntry* entry) const {
  if (entry) entry->AddReference();
  cls_UidCatalogEntry* old = m_Entry;
  m_Entry = entry;
  if (old) old->RemoveReference();
}

void cls_Uid::LinkHistoryEntry(cls_HistoryEntry* entry) const {
  if (m_Entry == nullptr) NewUid();
  m_Entry->LinkHistoryEntry(entry);
}

cls_HistoryEntry* cls_Uid::FirstHistoryEntry() const { return m_Entry ? m_Entry->FirstHistoryEntry() : nullptr; }

cls_HistoryEntry* cls_Uid::NextHistoryEntry(cls_HistoryEntry const* entry) const {
  return m_Entry ? m_Entry->NextHistoryEntry(entry) : nullptr;
}
