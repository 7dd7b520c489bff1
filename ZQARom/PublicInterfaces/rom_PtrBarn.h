#ifndef rom_PtrBarn_h
#define rom_PtrBarn_h

#include "ZQABasExport.h"
#include "cls_PTrie.h"
#include "rom_CidOid.h"

class rom_Transporter;

// One object known by address in a pointer barn. It owns nothing.
struct rom_PtrBarnStall {
  rom_CidOid m_Row;
  void const* m_Object;
};

// The objects held by plain pointer that a scope has written or read, each
// once, by row and by address: within one load or one shared-pointer output,
// an object reached twice is one object in memory and one row in the file.
// A barn is a scope: it installs itself as its transporter's barn and
// restores the previous one at its end. It owns none of the objects.
//
// Invariant: as in rom_CowBarn, both tries hold the same stalls (as copies:
// a stall is two words and a pointer), an address and a row each at most
// once.
class ZQA_EXPORT rom_PtrBarn {
public:
  explicit rom_PtrBarn(rom_Transporter& transporter);
  rom_PtrBarn(rom_PtrBarn const&) = delete;
  rom_PtrBarn& operator=(rom_PtrBarn const&) = delete;
  ~rom_PtrBarn();

  bool IsPresent(void const* object) const { return Stall(object) != nullptr; }
  bool IsPresent(unsigned int cid, int oid) const { return Stall(cid, oid) != nullptr; }
  rom_PtrBarnStall const* Stall(void const* object) const;
  rom_PtrBarnStall const* Stall(unsigned int cid, int oid) const;
  // Knows object as the one in row (cid, oid), forgetting what the barn knew
  // under that row or that address; answers object.
  void const* Insert(unsigned int cid, int oid, void const* object);
  void Clear();
  int Size() const { return m_ById.Size(); }

private:
  void Remove(rom_PtrBarnStall stall);

  rom_Transporter* m_Transporter;
  rom_PtrBarn* m_Previous;
  cls_PTrie<void const*, rom_PtrBarnStall, 2> m_ByAddress;
  cls_PTrie<rom_CidOid, rom_PtrBarnStall, 2> m_ById;
};

#endif
