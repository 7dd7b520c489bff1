#ifndef rom_MapObj_h
#define rom_MapObj_h

#include "cls_ReadMapKey2Obj.h"
#include "cls_WriteMapKey2Obj.h"
#include "cow_String.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "rfm_Row.h"
#include "rfm_Table.h"

class rom_Transporter;

// The object layer's maps from int or string keys to objects, stored in a
// table of layout "##MapInt2Obj" or "##Map": one row an entry, the object's
// id and class id in its first two columns and the key in the third, in
// the order written. A writer pours a whole map into a table that starts
// empty, a reader streams one out from its start; rom_AgentMapKey2Obj
// stays open behind a container.

// The layout and extent quantum of a map keyed by K.
template <class K>
struct rom_MapObjLayout;
template <>
struct rom_MapObjLayout<int> {
  static char const* Table();
  // A writer's or reader's; an agent's is rom_MapAgentQuantum().
  static int Quantum();
};
template <>
struct rom_MapObjLayout<cow_String> {
  static char const* Table();
  static int Quantum();
};
int rom_MapAgentQuantum();

template <class K>
class rom_WriteMapKey2Obj : public cls_WriteMapKey2Obj<K> {
public:
  // A new table.
  explicit rom_WriteMapKey2Obj(rom_Transporter& transporter);
  // The table at handle, emptied.
  rom_WriteMapKey2Obj(rom_Transporter& transporter, rfm_Handle const& handle);

  cls_MementoWrite* MakeWriteObj(K const& key, unsigned int cid, cls_Uid const& uid,
                                 cls_CowValue const* cow) override;
  cls_MementoWrite* MakeWriteObjWithPtr(K const& key, unsigned int cid, cls_Uid const& uid,
                                        void const* ptr) override;
  void MakeNullObj(K const& key, unsigned int cid) override;
  rfm_Handle Handle() const { return m_Table.Handle(); }

private:
  rom_WriteMapKey2Obj(rom_Transporter& transporter, rfm_Table table);
  // A new row with key.
  rfm_Row NewEntry(K const& key);

  rom_Transporter* m_Transporter;
  rfm_Table m_Table;
  rfm_FieldHandle m_Key;
};

// Reads entries of a map keyed by K behind the interface Base.
template <class Base, class K>
class rom_ReadMapKey2ObjImpl : public Base {
public:
  rom_ReadMapKey2ObjImpl(rom_Transporter& transporter, rfm_Handle const& handle);

  int Size() override { return m_Table.Length(); }
  bool Next() override;
  K const& ReadKey() override { return m_CurrentKey; }
  cls_CowValue const& ReadObjCow(unsigned int cid) override;
  cls_MementoRead* MakeReadObj() override;

protected:
  rom_Transporter* m_Transporter;
  rfm_Row m_Current;

private:
  rfm_Table m_Table;
  rfm_FieldHandle m_Key;
  K m_CurrentKey{};
};

class rom_ReadMapInt2Obj : public rom_ReadMapKey2ObjImpl<cls_ReadMapInt2Obj, int> {
public:
  using rom_ReadMapKey2ObjImpl::rom_ReadMapKey2ObjImpl;
  void* ReadObjPtr(unsigned int cid) override;
};

class rom_ReadMapString2Obj : public rom_ReadMapKey2ObjImpl<cls_ReadMapString2Obj, cow_String> {
public:
  using rom_ReadMapKey2ObjImpl::rom_ReadMapKey2ObjImpl;
};

using rom_WriteMapInt2Obj = rom_WriteMapKey2Obj<int>;
using rom_WriteMapString2Obj = rom_WriteMapKey2Obj<cow_String>;

extern template class rom_WriteMapKey2Obj<int>;
extern template class rom_WriteMapKey2Obj<cow_String>;
extern template class rom_ReadMapKey2ObjImpl<cls_ReadMapInt2Obj, int>;
extern template class rom_ReadMapKey2ObjImpl<cls_ReadMapString2Obj, cow_String>;

#endif
