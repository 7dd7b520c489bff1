#ifndef rom_UtlVisitor_h
#define rom_UtlVisitor_h

#include "ZQABasExport.h"
#include "mem_Alloc.h"

class rfm_Row;

// What a copy (rom_UtlCopy) tells its visitor, and what the visitor may
// decide: before an object is copied, a row to use instead; after, the two
// rows; after each row of a map's table, the new row. The base class
// decides nothing and does nothing.
class ZQA_EXPORT rom_UtlVisitor : public mem_AllocationOperators {
public:
  rom_UtlVisitor() = default;
  rom_UtlVisitor(rom_UtlVisitor const&) = delete;
  rom_UtlVisitor& operator=(rom_UtlVisitor const&) = delete;
  virtual ~rom_UtlVisitor();

  // The object id in the target to use for row oid of class cid instead of
  // copying it, or a negative value to copy it.
  virtual int AcceptObjectBeforeCopy(unsigned int cid, int oid);
  virtual void AcceptObjectAfterCopy(rfm_Row& source, rfm_Row& target, unsigned int cid);
  virtual void AcceptMapRowAfterCopy(rfm_Row& target);
};

#endif
