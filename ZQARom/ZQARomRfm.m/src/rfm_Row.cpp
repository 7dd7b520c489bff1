#include "rfm_Row.h"

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
