#include "rom_PtrBarn.h"

#include "rom_Transporter.h"

rom_PtrBarn::rom_PtrBarn(rom_Transporter& transporter)
    : m_Transporter(&transporter), m_Previous(transporter.SetPtrBarn(this)) {}

rom_PtrBarn::~rom_PtrBarn() {
  Clear();
  m_Transporter->SetPtrBarn(m_Previous);
}

rom_PtrBarnStall const* rom_PtrBarn::Stall(void const* object) const {
  auto const* leaf = m_ByAddress.ConstGetPtr(object);
  return leaf != nullptr ? &leaf->Value() : nullptr;
}

rom_PtrBarnStall const* rom_PtrBarn::Stall(unsigned int cid, int oid) const {
  auto const* leaf = m_ById.ConstGetPtr(rom_CidOid(cid, oid));
  return leaf != nullptr ? &leaf->Value() : nullptr;
}

void const* rom_PtrBarn::Insert(unsigned int cid, int oid, void const* object) {
  rom_PtrBarnStall const stall{rom_CidOid(cid, oid), object};
  if (rom_PtrBarnStall const* old = Stall(object)) Remove(*old);
  if (rom_PtrBarnStall const* old = Stall(cid, oid)) Remove(*old);
  m_ByAddress.Insert(object, stall);
  m_ById.Insert(stall.m_Row, stall);
  return object;
}

void rom_PtrBarn::Remove(rom_PtrBarnStall stall) {
  m_ById.Remove(stall.m_Row);
  m_ByAddress.Remove(stall.m_Object);
}

void rom_PtrBarn::Clear() {
  m_ById.Clear();
  m_ByAddress.Clear();
}
