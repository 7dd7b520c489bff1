#include "rfm_Row.h"

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
