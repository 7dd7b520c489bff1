#include "cls_UidCatalogEntry.h"

void cls_UidCatalogEntry::RemoveReference() {
  if (--m_References > 0 || m_Ending) return;
  m_Ending = true;
  // The first member is read again each time: a destructor may have deleted
  // others, or taken a reference that must keep the rest.
  while (m_References == 0 && m_Ring.IsLinked()) delete m_Ring.Next();
  m_Ending = false;
  if (m_References == 0) delete this;
}
