#include "rom_CowBarn.h"

#include "cls_ClassMetadata.h"
#include "cls_PTrieIter.h"
#include "cls_Static.h"

rom_CowBarnStall::rom_CowBarnStall(rom_CidOid const& row, cls_CowValue const& value,
                                   cls_ClassMetadata const& metadata)
    : m_Row(row), m_Value(value), m_Metadata(&metadata) {}

rom_CowBarnStall::~rom_CowBarnStall() { m_Metadata->DeleteCow(&m_Value); }

rom_CowBarnStall const* rom_CowBarn::Stall(cls_CowValue const& value) const {
  auto const* leaf = m_ByAddress.ConstGetPtr(value.Address());
  return leaf != nullptr ? leaf->Value().ConstGet() : nullptr;
}

rom_CowBarnStall const* rom_CowBarn::Stall(unsigned int cid, int oid) const {
  auto const* leaf = m_ById.ConstGetPtr(rom_CidOid(cid, oid));
  return leaf != nullptr ? leaf->Value().ConstGet() : nullptr;
}

cls_CowValue const& rom_CowBarn::Insert(unsigned int cid, int oid, cls_CowValue const& value,
                                        cls_ClassMetadata const& metadata) {
  if (m_Cleaning) return cls_Static::ConstIntCOW();
  Stall_ const stall(new rom_CowBarnStall(rom_CidOid(cid, oid), value, metadata));
  // The stalls put out are held here until both tries are consistent: their
  // ends run the objects' destructors, which may ask the barn.
  Stall_ byAddress;
  Stall_ byId;
  // A value new to the barn, at a row of its own, takes one walk of each
  // trie. An old stall at the address leaves both tries before the one at
  // the row is looked for: it may be the same.
  if (m_ByAddress.InsertNew(value.Address(), stall) == nullptr) {
    Remove(*Stall(value), byAddress);
    m_ByAddress.Insert(value.Address(), stall);
  }
  if (m_ById.InsertNew(stall.ConstGet()->Row(), stall) == nullptr) {
    Remove(*Stall(cid, oid), byId);
    m_ById.Insert(stall.ConstGet()->Row(), stall);
  }
  return stall.ConstGet()->Value();
}

void rom_CowBarn::Remove(rom_CowBarnStall const& stall, Stall_& keep) {
  keep = m_ById.ConstGet(stall.Row());
  m_ById.Remove(stall.Row());
  m_ByAddress.Remove(stall.Value().Address());
}

void rom_CowBarn::CleanStalls() {
  m_Cleaning = true;
  for (;;) {
    rom_CowBarnStall const* alone = nullptr;
    for (cls_PTrieIter<rom_CidOid, Stall_, 2> it(m_ById); !it.IsDone() && alone == nullptr; it.Next())
      if (it.CurrentValue().ConstGet()->Value().ReferenceCount() == 1) alone = it.CurrentValue().ConstGet();
    if (alone == nullptr) break;
    // The walk starts again after the end of the stall's object, which may
    // leave others held by the barn alone.
    Stall_ gone;
    Remove(*alone, gone);
  }
  m_Cleaning = false;
}

void rom_CowBarn::Clear() {
  cls_PTrie<void const*, Stall_, 2> byAddress;
  cls_PTrie<rom_CidOid, Stall_, 2> byId;
  byAddress.Swap(m_ByAddress);
  byId.Swap(m_ById);
  // The objects end here, as the stalls taken out go, with both tries
  // empty and consistent.
}
