#include "rom_ArrayString.h"

#include "rfm_FieldHandle.h"
#include "rfm_Row.h"
#include "rom_ExtentQuanta.h"
#include "rom_ListStore.h"
#include "rom_Transporter.h"

namespace {
// A "##StringArray" row's string.
rfm_FieldHandle const kDataColumn(0);

int Quantum() { return rom_ExtentQuantum(kRomQuantumArrayString, kRomArrayQuantumDefault); }
}  // namespace

rom_ArrayString::rom_ArrayString(rom_Transporter const& transporter, rfm_Handle const& handle) {
  rfm_Database const& database = transporter.Database();
  if (database.HandleType(handle) == rfm_TypeTable) {
    m_Table = database.Table(handle, Quantum(), -1);
    rom_ListStore::CheckStringTable(transporter, m_Table);
  } else {
    m_Array = database.ArrayString(handle, Quantum(), 0);
    rom_ListStore::CheckOneField(transporter, handle, m_Array.FieldCount());
  }
}

rom_ArrayString::rom_ArrayString(rom_Transporter const& transporter)
    : m_Array(transporter.Database().ArrayString(1, Quantum(), 0)) {}

int rom_ArrayString::Read(cow_String* values, int count) const {
  if (!IsTable()) return m_Array.Read(values, count);
  int read = 0;
  while (read < count && m_Table.RowExists(-1)) values[read++] = m_Table.ReadRow(-1).ReadFieldString(kDataColumn);
  return read;
}

int rom_ArrayString::Write(cow_String const* values, int count) const {
  if (!IsTable()) return m_Array.Write(values, count);
  // Rows by number: a new row at the end does not move the table's cursor.
  int const first = m_Table.Location();
  for (int i = 0; i < count; ++i) m_Table.UpdateRow(first + i).WriteFieldString(kDataColumn, values[i]);
  m_Table.Seek(first + count);
  return count;
}

void rom_ArrayString::Seek(int element) const {
  if (IsTable())
    m_Table.Seek(element);
  else
    m_Array.Seek(element);
}

int rom_ArrayString::Length() const { return IsTable() ? m_Table.Length() : m_Array.Length(); }

void rom_ArrayString::Truncate(int elements) const {
  if (IsTable())
    m_Table.Truncate(elements);
  else
    m_Array.Truncate(elements);
}

int rom_ArrayString::Snap() const { return IsTable() ? m_Table.Snap() : m_Array.Snap(); }

int rom_ArrayString::Flush() const { return IsTable() ? m_Table.Flush() : m_Array.Flush(); }

rfm_Handle rom_ArrayString::Handle() const { return IsTable() ? m_Table.Handle() : m_Array.Handle(); }
