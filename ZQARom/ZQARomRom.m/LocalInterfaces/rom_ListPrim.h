#ifndef rom_ListPrim_h
#define rom_ListPrim_h

#include "cls_AgentListPrim.h"
#include "cls_ReadListPrim.h"
#include "cls_WriteListPrim.h"
#include "rfm_Handle.h"
#include "rom_Transporter.h"

// The object layer's three ways to a list of values of type T, stored in a
// store A (rom_ArrayNumber's instances or rom_ArrayString): one element a
// row, flat, whatever the list's column count says. A writer pours a whole
// list into a store that starts empty, a reader streams one out from its
// start, an agent stays open as a container's back-end. Each bulk operation
// goes to the store with one seek.

template <class T, class A>
class rom_WriteListPrim : public cls_WriteListPrim<T> {
public:
  // A new store.
  explicit rom_WriteListPrim(rom_Transporter& transporter) : m_Store(transporter) {}
  // The store at handle, emptied.
  rom_WriteListPrim(rom_Transporter& transporter, rfm_Handle const& handle)
      : m_Store(transporter, handle) {
    m_Store.Truncate(0);
  }

  void Write(T const& value) override { m_Store.Write(&value, 1); }
  void Write(T const* values, int count) override {
    if (count > 0) m_Store.Write(values, count);
  }
  rfm_Handle Handle() const { return m_Store.Handle(); }

private:
  A m_Store;
};

template <class T, class A>
class rom_ReadListPrim : public cls_ReadListPrim<T> {
public:
  rom_ReadListPrim(rom_Transporter& transporter, rfm_Handle const& handle, int columns)
      : m_Store(transporter, handle), m_Columns(columns) {
    m_Store.Seek(0);
  }

  int Size() override { return m_Store.Length(); }
  int Columns() override { return m_Columns; }
  void Next() override { m_Store.Read(&m_Current, 1); }
  T const& Read() override { return m_Current; }
  int Read(T* values, int count) override { return count > 0 ? m_Store.Read(values, count) : 0; }

private:
  A m_Store;
  int m_Columns;
  T m_Current{};
};

template <class T, class A>
class rom_AgentListPrim : public cls_AgentListPrim<T> {
public:
  // The store at handle of the list of object oid.
  rom_AgentListPrim(rom_Transporter& transporter, int oid, rfm_Handle const& handle, int columns)
      : m_Transporter(&transporter), m_Store(transporter, handle), m_Oid(oid), m_Columns(columns) {}
  // A new store, flushed at once so that it has a handle; the owner stores
  // the column count.
  rom_AgentListPrim(rom_Transporter& transporter, int oid, int columns)
      : m_Transporter(&transporter), m_Store(transporter), m_Oid(oid), m_Columns(columns) {
    m_Store.Flush();
  }

  int Size() const override { return m_Store.Length(); }
  int Columns() const override { return m_Columns; }
  int Snap() override { return m_Store.Snap(); }
  int Flush() override { return m_Store.Flush(); }
  void Store(int first, int count, T const* values) override {
    m_Store.Seek(first);
    if (count > 0) m_Store.Write(values, count);
  }
  int Fetch(int first, int count, T* values) override {
    m_Store.Seek(first);
    return count > 0 ? m_Store.Read(values, count) : 0;
  }
  // A plain count: the container that holds the agent deletes it.
  void RefCountInc() override { ++m_References; }
  void RefCountDec() override { --m_References; }
  int GetRefCount() const override { return m_References; }
  bool ReadOnly() const override { return m_Transporter->Database().ReadOnly(); }
  void RegisterPC(cls_PC* container) const override { m_Transporter->RegisterPC(container); }

  // Empties the list.
  void Clear() { m_Store.Truncate(0); }
  rfm_Handle Handle() const { return m_Store.Handle(); }
  int Oid() const { return m_Oid; }

private:
  int m_References = 0;
  rom_Transporter* m_Transporter;
  A m_Store;
  int m_Oid;
  int m_Columns;
};

#endif
