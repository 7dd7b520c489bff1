#include "cls_ExtQuant.h"

int cls_ExtQuant::ExtentQuantum(cow_String const& name, int defaultQuantum) const {
  auto const found = m_Quanta.find(name.CStr());
  return found == m_Quanta.end() ? defaultQuantum : found->second;
}

void cls_ExtQuant::SetExtentQuantum(cow_String const& name, int quantum) {
  if (quantum < 1)
    m_Quanta.erase(name.CStr());
  else
    m_Quanta[name.CStr()] = quantum;
}
