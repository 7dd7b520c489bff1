#include "rom_HistoryEntry.h"

#include "rom_History.h"

rom_HistoryEntry::rom_HistoryEntry(rom_History& owner, cls_Uid const& uid, rom_CidOid const& row)
    : m_Owner(&owner), m_Identity(nullptr), m_Row(row) {
  uid.LinkHistoryEntry(this);
  m_Identity = uid.CatalogEntry();
}

rom_HistoryEntry::~rom_HistoryEntry() {
  UnLink();
  m_Owner->MapRemove(m_Row.m_Cid, m_Row.m_Oid);
}
