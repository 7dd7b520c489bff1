#ifndef rom_HistoryEntry_h
#define rom_HistoryEntry_h

#include "ZQABasExport.h"
#include "cls_HistoryEntry.h"
#include "cls_Uid.h"
#include "rom_CidOid.h"

class cls_UidCatalogEntry;
class rom_History;

// One object's row in one database: a node of the ring on the object's
// identity (cls_UidCatalogEntry) and an entry of its database's history.
// Whoever ends first ends it: the identity, when the last cls_Uid naming the
// object goes, or the history, when its transporter goes. Either way it
// leaves the ring and the history's map.
class ZQA_EXPORT rom_HistoryEntry : public cls_HistoryEntry {
public:
  // Links itself on uid's ring, which gives a null uid an identity.
  rom_HistoryEntry(rom_History& owner, cls_Uid const& uid, rom_CidOid const& row);
  ~rom_HistoryEntry() override;

  rom_History const* Owner() const { return m_Owner; }
  cls_Uid GetUid() const { return cls_Uid(m_Identity); }
  unsigned int ClassId() const { return m_Row.m_Cid; }
  int ObjectId() const { return m_Row.m_Oid; }
  rom_CidOid const& Row() const { return m_Row; }
  // Whether the current write record has written this object.
  bool Recorded() const { return m_Recorded != 0; }
  void SetRecorded(bool recorded) { m_Recorded = recorded ? 1 : 0; }

private:
  rom_History* m_Owner;
  cls_UidCatalogEntry* m_Identity;
  rom_CidOid m_Row;
  unsigned char m_Recorded = 0;
};

#endif
