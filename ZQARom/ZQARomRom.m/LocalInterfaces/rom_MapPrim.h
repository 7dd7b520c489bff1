#ifndef rom_MapPrim_h
#define rom_MapPrim_h

#include "cls_ReadMapKey2Prim.h"
#include "cls_WriteMapKey2Prim.h"
#include "rfm_Handle.h"
#include "rfm_Row.h"
#include "rfm_Table.h"
#include "rom_ExtentQuanta.h"
#include "rom_HeaderLayout.h"
#include "rom_MapStore.h"
#include "rom_Transporter.h"

// The object layer's maps from int or string keys to values, stored in a
// table of one of the layouts "##MapInt2..." and "##MapString2...": one row
// an entry, the value in "Data", the key in "Key", in the order written. The
// layouts differ in where the two fields are, so they are found by name when
// a table is opened. A writer pours a whole map into a table that starts
// empty; a reader streams one out from its start.

// The store of a map from K to T: its table's layout and extent quantum.
template <class K, class T, char const* TableName, char const* QuantumName>
struct rom_MapPrimLayout {
  using Key = K;
  using Value = T;
  static char const* Table() { return TableName; }
  static int Quantum() { return rom_ExtentQuantum(QuantumName, kRomColMapValueQuantumDefault); }
};

using rom_ArrayInt2Double = rom_MapPrimLayout<int, double, kRomMapInt2DoubleTableName, kRomQuantumColInt2Double>;
using rom_ArrayInt2Float = rom_MapPrimLayout<int, float, kRomMapInt2FloatTableName, kRomQuantumColInt2Float>;
using rom_ArrayInt2Int = rom_MapPrimLayout<int, int, kRomMapInt2IntTableName, kRomQuantumColInt2Int>;
using rom_ArrayInt2Uint = rom_MapPrimLayout<int, unsigned int, kRomMapInt2IntTableName, kRomQuantumColInt2Uint>;
using rom_ArrayInt2String = rom_MapPrimLayout<int, cow_String, kRomMapInt2StringTableName, kRomQuantumColInt2String>;
using rom_ArrayString2Double =
    rom_MapPrimLayout<cow_String, double, kRomMapString2DoubleTableName, kRomQuantumColString2Double>;
using rom_ArrayString2Float = rom_MapPrimLayout<cow_String, float, kRomMapString2FloatTableName, kRomQuantumColString2Float>;
using rom_ArrayString2Int = rom_MapPrimLayout<cow_String, int, kRomMapString2IntTableName, kRomQuantumColString2Int>;
using rom_ArrayString2Uint =
    rom_MapPrimLayout<cow_String, unsigned int, kRomMapString2IntTableName, kRomQuantumColString2Uint>;
using rom_ArrayString2String =
    rom_MapPrimLayout<cow_String, cow_String, kRomMapString2StringTableName, kRomQuantumColString2String>;

// The reader of a map of layout A, behind the interface Base.
template <class Base, class A>
class rom_ReadMapPrimImpl : public Base {
public:
  using K = typename A::Key;
  using T = typename A::Value;

  rom_ReadMapPrimImpl(rom_Transporter& transporter, rfm_Handle const& handle)
      : m_Table(rom_MapStore::OpenTable(transporter, handle, A::Quantum())),
        m_Key(rom_MapStore::Field(transporter, m_Table, kRomElementKeyName, rom_MapField<K>::kType)),
        m_Data(rom_MapStore::Field(transporter, m_Table, kRomElementDataName, rom_MapField<T>::kType)) {
    m_Table.Seek(0);
  }

  int Size() override { return m_Table.Length(); }
  bool Next() override {
    if (!m_Table.RowExists(-1)) return false;
    rfm_Row const row = m_Table.ReadRow(-1);
    m_CurrentKey = rom_MapField<K>::Read(row, m_Key);
    m_Current = rom_MapField<T>::Read(row, m_Data);
    return true;
  }
  T const& Read() override { return m_Current; }
  K const& ReadKey() override { return m_CurrentKey; }

private:
  rfm_Table m_Table;
  rfm_FieldHandle m_Key;
  rfm_FieldHandle m_Data;
  T m_Current{};
  K m_CurrentKey{};
};

// The writer of a map of layout A, behind the interface Base.
template <class Base, class A>
class rom_WriteMapPrimImpl : public Base {
public:
  using K = typename A::Key;
  using T = typename A::Value;

  // A new table.
  explicit rom_WriteMapPrimImpl(rom_Transporter& transporter)
      : rom_WriteMapPrimImpl(transporter, rom_MapStore::NewTable(transporter, A::Table(), A::Quantum())) {}
  // The table at handle, emptied.
  rom_WriteMapPrimImpl(rom_Transporter& transporter, rfm_Handle const& handle)
      : rom_WriteMapPrimImpl(transporter, rom_MapStore::OpenTable(transporter, handle, A::Quantum())) {
    m_Table.Truncate(0);
  }

  void Write(K const& key, T const& value) override {
    rfm_Row const row = m_Table.NewRow();
    rom_MapField<K>::Write(row, m_Key, key);
    rom_MapField<T>::Write(row, m_Data, value);
  }
  rfm_Handle Handle() const { return m_Table.Handle(); }

private:
  rom_WriteMapPrimImpl(rom_Transporter& transporter, rfm_Table table)
      : m_Table(std::move(table)),
        m_Key(rom_MapStore::Field(transporter, m_Table, kRomElementKeyName, rom_MapField<K>::kType)),
        m_Data(rom_MapStore::Field(transporter, m_Table, kRomElementDataName, rom_MapField<T>::kType)) {}

  rfm_Table m_Table;
  rfm_FieldHandle m_Key;
  rfm_FieldHandle m_Data;
};

template <class T, class A>
class rom_ReadMapInt2Prim : public rom_ReadMapPrimImpl<cls_ReadMapInt2Prim<T>, A> {
  using rom_ReadMapPrimImpl<cls_ReadMapInt2Prim<T>, A>::rom_ReadMapPrimImpl;
};
template <class T, class A>
class rom_WriteMapInt2Prim : public rom_WriteMapPrimImpl<cls_WriteMapInt2Prim<T>, A> {
  using rom_WriteMapPrimImpl<cls_WriteMapInt2Prim<T>, A>::rom_WriteMapPrimImpl;
};
template <class T, class A>
class rom_ReadMapString2Prim : public rom_ReadMapPrimImpl<cls_ReadMapString2Prim<T>, A> {
  using rom_ReadMapPrimImpl<cls_ReadMapString2Prim<T>, A>::rom_ReadMapPrimImpl;
};
template <class T, class A>
class rom_WriteMapString2Prim : public rom_WriteMapPrimImpl<cls_WriteMapString2Prim<T>, A> {
  using rom_WriteMapPrimImpl<cls_WriteMapString2Prim<T>, A>::rom_WriteMapPrimImpl;
};

// A table of int pairs: a "##MapInt2Int" table read and written as such.
class rom_ReadIntTableInt : public rom_ReadMapPrimImpl<cls_ReadIntTableInt, rom_ArrayInt2Int> {
  using rom_ReadMapPrimImpl::rom_ReadMapPrimImpl;
};
class rom_WriteIntTableInt : public rom_WriteMapPrimImpl<cls_WriteIntTableInt, rom_ArrayInt2Int> {
  using rom_WriteMapPrimImpl::rom_WriteMapPrimImpl;
};

#endif
