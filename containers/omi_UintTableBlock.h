#ifndef omi_UintTableBlock_h
#define omi_UintTableBlock_h

#include "omi_BlkBitVect.h"
#include "omi_BlockedArray.h"

// One top slot of an omi_UintTable: the cells of all keys that share a high
// part, and a bit vector that says which of those cells hold a value.
// Invariant (kept by the table): a bit is set exactly for the cells whose key
// is in the table, and a block with no bit set does not exist.
template <class V>
class omi_UintTableBlock : public omi_BlockedArray<V> {
public:
  omi_UintTableBlock(unsigned int quantum, unsigned int shift) : omi_BlockedArray<V>(quantum, shift) {}
  omi_UintTableBlock(omi_UintTableBlock const&) = default;
  omi_UintTableBlock& operator=(omi_UintTableBlock const&) = default;

  omi_BlkBitVect& Bits() noexcept { return m_Bits; }
  omi_BlkBitVect const& Bits() const noexcept { return m_Bits; }

private:
  omi_BlkBitVect m_Bits;
};

#endif
