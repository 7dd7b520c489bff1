#ifndef rom_ListObj_h
#define rom_ListObj_h

#include "cls_AgentListObj.h"
#include "cls_ReadListObj.h"
#include "cls_WriteListObj.h"
#include "cow_List.h"
#include "rfm_Handle.h"
#include "rfm_Row.h"
#include "rfm_Table.h"

class rom_Transporter;

// The object layer's three ways to a list of objects, stored in a table of
// layout "##List": one row an element, the object's id and class id in its
// first two columns; a row without data is a null element and keeps its
// place. A writer pours a whole list into a table that starts empty, a
// reader streams one out from its start, an agent stays open as a
// container's back-end.

class rom_WriteListObj : public cls_WriteListObj {
public:
  // A new table.
  explicit rom_WriteListObj(rom_Transporter& transporter);
  // The table at handle, emptied.
  rom_WriteListObj(rom_Transporter& transporter, rfm_Handle const& handle);

  cls_MementoWrite* MakeWriteObj(unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) override;
  cls_MementoWrite* MakeWriteObjWithPtr(unsigned int cid, cls_Uid const& uid, void const* ptr) override;
  void MakeNullObj(unsigned int cid) override;
  rfm_Handle Handle() const { return m_Table.Handle(); }

private:
  rom_Transporter* m_Transporter;
  rfm_Table m_Table;
};

class rom_ReadListObj : public cls_ReadListObj {
public:
  rom_ReadListObj(rom_Transporter& transporter, rfm_Handle const& handle, int columns);

  int Size() override { return m_Table.Length(); }
  int Columns() override { return m_Columns; }
  bool Next() override;
  void* ReadObjPtr(unsigned int cid) override;
  cls_CowValue const& ReadObjCow(unsigned int cid) override;
  cls_MementoRead* MakeReadObj() override;

private:
  rom_Transporter* m_Transporter;
  rfm_Table m_Table;
  rfm_Row m_Current;
  int m_Columns;
};

// Invariant: m_Dirty has a flag for every row the agent has seen (loaded,
// written or snapped in); rows past it are new, and always written.
class rom_AgentListObj : public cls_AgentListObj {
public:
  // The table at handle of the list of object oid; every row is clean.
  rom_AgentListObj(rom_Transporter& transporter, int oid, rfm_Handle const& handle);
  // A new table, flushed at once so that it has a handle.
  rom_AgentListObj(rom_Transporter& transporter, int oid);

  int Size() override { return m_Table.Length(); }
  cls_CowValue const& Get(int index, unsigned int cid) override;
  int Snap() override;
  int Flush() override { return m_Table.Flush(); }
  bool DoWrite(int index) override;
  void SetDirty(int index) override;
  cls_MementoWrite* MakeWriteObj(int index, unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) override;
  cls_MementoWrite* MakeWriteObjWithPtr(int index, unsigned int cid, cls_Uid const& uid,
                                        void const* ptr) override;
  void RefCountInc() override { ++m_References; }
  void RefCountDec() override { --m_References; }
  int GetRefCount() const override { return m_References; }
  void Release() const override;
  bool ReadOnly() const override;
  void RegisterPC(cls_PC* container) const override;

  // Empties the list; the flags stay.
  void Clear() { m_Table.Truncate(0); }
  rfm_Handle Handle() const { return m_Table.Handle(); }

private:
  // The row of element index: a new one at or past the flags' end.
  rfm_Row ElementRow(int index);

  int m_References = 0;
  rom_Transporter* m_Transporter;
  rfm_Table m_Table;
  int m_Oid;
  cow_List<int> m_Dirty;
};

#endif
