#ifndef rom_UtlPrune_h
#define rom_UtlPrune_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "mem_Alloc.h"

// Which members a copy (rom_UtlCopy) leaves out. A member left out keeps
// no data in the copy, unless it refers to a list or a map, which is copied
// still: a collection belongs to its owner alone, so leaving it out would
// lose it, while an object left out stays in the source for whoever copies
// it on its own.
class ZQA_EXPORT rom_UtlPrune : public mem_AllocationOperators {
public:
  rom_UtlPrune() = default;
  rom_UtlPrune(rom_UtlPrune const&) = delete;
  rom_UtlPrune& operator=(rom_UtlPrune const&) = delete;
  virtual ~rom_UtlPrune();

  // Whether the reference member of class cid is left out.
  virtual bool Exclude(unsigned int cid, cow_String const& member) = 0;
};

#endif
