#ifndef rom_AgentProxy_h
#define rom_AgentProxy_h

#include "cls_AgentProxy.h"

class rom_Transporter;

// One stored object held unloaded: what the read memento answers for a
// lazily held member. It names a row, (stored class, object id), of its
// transporter and the class the member expects, and reads nothing of the
// object until Load. Written into another database, it copies the object's
// rows (once per target) instead of building the object, and from then on
// stands for the copy.
//
// Invariant: m_Oid < 0 exactly for a null reference, whose stored class is
// cls_kNoClass; otherwise m_Stored is m_Expected or derives from it. A
// container registered through RegisterPC is in the ring of the transporter
// the proxy points at, also after Transfer has repointed it.
class rom_AgentProxy : public cls_AgentProxy {
public:
  // transporter must outlive the proxy, or the proxy's container must drop
  // it at Disconnect.
  rom_AgentProxy(rom_Transporter& transporter, unsigned int expected, unsigned int stored, int oid);

  bool HasValue() const override { return m_Oid >= 0; }
  bool IsLoaded() const override;
  cls_CowValue Load() const override;
  cls_Uid GetUid() const override;
  bool Transfer(int storageType, cls_MementoWrite* memento, cls_FieldHandle const& field) override;
  void RegisterPC(cls_PC* container) const override;

  rom_Transporter& Transporter() const { return *m_Transporter; }
  unsigned int StoredClass() const { return m_Stored; }
  int ObjectId() const { return m_Oid; }

private:
  // The object id in target of the copy of this proxy's object and all it
  // reaches, rows that target has already not copied again.
  int CopyInto(rom_Transporter& target) const;
  // Stands for row oid of target from now on, and takes the container along.
  void Repoint(rom_Transporter& target, int oid);

  rom_Transporter* m_Transporter;
  unsigned int m_Expected;
  unsigned int m_Stored;
  int m_Oid;
  // The container registered with the transporter, which holds this proxy;
  // not owned.
  mutable cls_PC* m_Container = nullptr;
};

#endif
