#ifndef rom_AgentMapKey2Obj_h
#define rom_AgentMapKey2Obj_h

#include "cls_AgentMapKey2Obj.h"
#include "cow_String.h"
#include "omi_Btree.h"
#include "omi_BtreeIterator.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "rfm_Table.h"

class rom_Transporter;

// What an agent knows of one key: its row, whether that row holds an
// object, and whether the container changed the object since it was
// written.
struct rom_AgentMapKey2ObjStat {
  int m_Dirty = 0;
  int m_Row = 0;
  bool m_Present = false;
};

// The live back-end of a map from K (int or cow_String) to objects, on a
// table of layout "##MapInt2Obj" or "##Map". It keeps an index from each
// key to its row and nothing of the objects, so a key costs one row read
// and a map of large objects is walked without reading any.
//
// Loading the index (on open and on a Snap that finds new rows) goes over
// the rows in order: the first row of a key that holds an object wins; a
// key whose row holds none (removed, or a null entry) stays in the index as
// absent, and a later row with an object for it takes its place. Removing a
// key writes the stored null reference into its row and keeps the key.
//
// Invariant: every key of the index names a row the agent has seen, except
// after Clear, when the rows are gone until each key is written again. The
// walk (First/Next) is over the index as it was when it started: writing a
// new key or a Snap in between starts no new walk, and the walk must be
// started anew.
template <class K>
class rom_AgentMapKey2Obj : public cls_AgentMapKey2Obj<K> {
public:
  // The table at handle of the map of object oid, its index loaded.
  rom_AgentMapKey2Obj(rom_Transporter& transporter, int oid, rfm_Handle const& handle);
  // A new table, flushed at once so that it has a handle.
  rom_AgentMapKey2Obj(rom_Transporter& transporter, int oid);

  int Snap() override;
  int Flush() override { return m_Table.Flush(); }
  void First() override { m_Walk.First(); }
  void Next() override { m_Walk.Next(); }
  bool IsDone() const override { return m_Walk.IsDone(); }
  K const& Key() const override { return m_Walk.CurrentKey(); }
  cls_CowValue const& Get(K const& key, unsigned int cid) override;
  bool DoWrite(K const& key) const override;
  bool Present(K const& key) const override;
  void SetDirty(K const& key) override;
  cls_MementoWrite* MakeWriteObj(K const& key, unsigned int cid, cls_Uid const& uid,
                                 cls_CowValue const* cow) override;
  cls_MementoWrite* MakeWriteObjWithPtr(K const& key, unsigned int cid, cls_Uid const& uid,
                                        void const* ptr) override;
  void Remove(K const& key) override;
  void RefCountInc() override { ++m_References; }
  void RefCountDec() override { --m_References; }
  int GetRefCount() const override { return m_References; }
  void Release() const override;
  bool ReadOnly() const override;
  void RegisterPC(cls_PC* container) const override;

  // Reads the rows from the first on into the index.
  void LoadStatMap();
  static char const* TableName();
  // Empties the table; the index stays.
  void Clear() { m_Table.Truncate(0); }
  rfm_Handle Handle() const { return m_Table.Handle(); }

private:
  using StatMap = omi_Btree<K, rom_AgentMapKey2ObjStat>;

  // The row of key's object to write: a new entry for a new key, else its
  // own row, which must hold an object.
  rfm_Row EntryRow(K const& key);

  int m_References = 0;
  rom_Transporter* m_Transporter;
  rfm_Table m_Table;
  rfm_FieldHandle m_Key;
  int m_Oid;
  StatMap m_StatMap;
  omi_BtreeIterator<K, rom_AgentMapKey2ObjStat> m_Walk;
};

extern template class rom_AgentMapKey2Obj<int>;
extern template class rom_AgentMapKey2Obj<cow_String>;

#endif
