#include "rfm_Row.h"

#include "rfm_RowImpl.h"

rfm_Row::rfm_Row(rfm_RowRepr* repr) : m_Repr(repr) {
  if (m_Repr) ++m_Repr->m_Uses;
}

rfm_Row::rfm_Row(rfm_Row const& other) : rfm_Row(other.m_Repr) {}

rfm_Row& rfm_Row::operator=(rfm_Row const& other) {
  rfm_RowRepr* repr = other.m_Repr;
  if (repr) ++repr->m_Uses;
  Nullify();
  m_Repr = repr;
  return *this;
}

void rfm_Row::Nullify() {
  if (m_Repr == nullptr) return;
  // A row whose table has gone belongs to its last holder.
  if (--m_Repr->m_Uses == 0 && m_Repr->m_Impl->Table() == nullptr) delete m_Repr;
  m_Repr = nullptr;
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
