#ifndef rom_CowBarn_h
#define rom_CowBarn_h

#include "ZQABasExport.h"
#include "cls_CowValue.h"
#include "cls_PTrie.h"
#include "cow_CountedHld.h"
#include "rom_CidOid.h"

class cls_ClassMetadata;

// One copy-on-write object the barn keeps: its row and a share of its value.
// Its end drops the share in the way of the class's metadata.
class ZQA_EXPORT rom_CowBarnStall {
public:
  rom_CowBarnStall(rom_CidOid const& row, cls_CowValue const& value, cls_ClassMetadata const& metadata);
  rom_CowBarnStall(rom_CowBarnStall const&) = delete;
  rom_CowBarnStall& operator=(rom_CowBarnStall const&) = delete;
  ~rom_CowBarnStall();

  rom_CidOid const& Row() const { return m_Row; }
  unsigned int ClassId() const { return m_Row.m_Cid; }
  int ObjectId() const { return m_Row.m_Oid; }
  cls_CowValue const& Value() const { return m_Value; }

private:
  rom_CidOid m_Row;
  cls_CowValue m_Value;
  cls_ClassMetadata const* m_Metadata;
};

// The copy-on-write objects a transporter has written or read, each once,
// found by row and by the value's address: a value in the barn is stored
// already, and a row in the barn has been built already. The barn keeps a
// share of each value until Clear, so an object read once stays one object
// in memory for the transporter's life.
//
// Invariant: both tries hold the same stalls, each under its own row and
// its own address; an address and a row each name at most one stall, the
// newest inserted.
class ZQA_EXPORT rom_CowBarn {
public:
  rom_CowBarn() = default;
  rom_CowBarn(rom_CowBarn const&) = delete;
  rom_CowBarn& operator=(rom_CowBarn const&) = delete;
  ~rom_CowBarn() { Clear(); }

  bool IsPresent(cls_CowValue const& value) const { return Stall(value) != nullptr; }
  bool IsPresent(unsigned int cid, int oid) const { return Stall(cid, oid) != nullptr; }
  // Null when absent.
  rom_CowBarnStall const* Stall(cls_CowValue const& value) const;
  rom_CowBarnStall const* Stall(unsigned int cid, int oid) const;
  // Keeps value as the object in row (cid, oid), replacing whatever the barn
  // held under that row or that address, and answers the kept value. While
  // the barn is cleaning its stalls it keeps nothing and answers the empty
  // value.
  cls_CowValue const& Insert(unsigned int cid, int oid, cls_CowValue const& value, cls_ClassMetadata const& metadata);
  // Lets go of every value that only the barn holds, and of those that their
  // ends leave held only by the barn.
  void CleanStalls();
  // Lets go of every value.
  void Clear();
  int Size() const { return m_ById.Size(); }

private:
  using Stall_ = cow_CountedHld<rom_CowBarnStall>;
  void Remove(rom_CowBarnStall const& stall, Stall_& keep);

  bool m_Cleaning = false;
  cls_PTrie<void const*, Stall_, 2> m_ByAddress;
  cls_PTrie<rom_CidOid, Stall_, 2> m_ById;
};

#endif
