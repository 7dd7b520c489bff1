#include "rfm_Row.h"

#include "rfm_RowImpl.h"
#include "rfm_TableRepr.h"

#include <utility>

rfm_Row::rfm_Row(rfm_RowRepr* repr) : m_Repr(repr) {
  // The first holder of a row becomes a holder of its table.
  if (m_Repr && m_Repr->m_Uses++ == 0) m_Repr->m_Impl->Table()->AddHolder();
}

rfm_Row::rfm_Row(rfm_Row const& other) : rfm_Row(other.m_Repr) {}

rfm_Row& rfm_Row::operator=(rfm_Row const& other) {
  rfm_Row taken(other);
  std::swap(m_Repr, taken.m_Repr);
  return *this;
}

void rfm_Row::Nullify() {
  rfm_RowRepr* repr = m_Repr;
  m_Repr = nullptr;
  if (repr == nullptr || --repr->m_Uses > 0) return;
  rfm_TableRepr* table = repr->m_Impl->Table();
  // A row whose table has gone belongs to its last holder; a row in a table
  // goes back to the table's cache, which the table may now write and end.
  if (table == nullptr) {
    delete repr;
  } else {
    rfm_TableRepr::DropHolder(table);
  }
}

rfm_RowImpl& rfm_Row::Impl() const { return *m_Repr->m_Impl; }

// The reads and writes of numbers and handles, every row's hot path,
// stand in rfm_RowImpl.cpp: see there.

bool rfm_Row::FieldIsPresent(rfm_FieldHandle const& h) const { return Impl().FieldIsPresent(h); }
bool rfm_Row::DataIsPresent(rfm_FieldHandle const& h) const { return Impl().DataIsPresent(h); }
cow_String rfm_Row::ReadFieldString(rfm_FieldHandle const& h) const { return Impl().ReadFieldString(h); }
void rfm_Row::WriteFieldString(rfm_FieldHandle const& h, cow_String const& value) const {
  Impl().WriteFieldString(h, value);
}

void rfm_Row::NeuterFieldString(rfm_FieldHandle const& h, cow_String const& replacement) const {
  Impl().NeuterFieldString(h, replacement);
}

void rfm_Row::Erase() const { Impl().Erase(); }
void rfm_Row::Erase(rfm_FieldHandle const& h) const { Impl().Erase(h); }
void rfm_Row::CopyField(rfm_Row const& source, rfm_FieldHandle const& h) const { Impl().CopyField(source.Impl(), h); }
int rfm_Row::Location() const { return Impl().Location(); }
rfm_MapName2FieldMetadata const& rfm_Row::FieldMetadataMap() const { return Impl().FieldMetadataMap(); }
