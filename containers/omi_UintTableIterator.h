#ifndef omi_UintTableIterator_h
#define omi_UintTableIterator_h

#include "omi_BlkBitVect.h"
#include "omi_UintTable.h"
#include "omi_UintTableNode.h"

#include <cstdint>
#include <cstdlib>

// A walk over the entries of an omi_UintTable in either direction.
//
// Without a comparison function it walks the top array in slot order and,
// in each block, the set bits of the presence vector, so keys come in
// ascending order at the cost of word scans and no allocation. NextBlock and
// PreviousBlock skip to the first entry of the next block or the last entry of
// the previous one. Invariant: unless IsDone(), m_Block is the block of top
// slot m_Slot and m_Bits stands on a set bit of it.
//
// With a comparison function (see omi_UintTableNode), First and Last collect
// every entry and sort them, equal ones in ascending key order; the walk is
// then over that array, and the block moves are a programming error.
//
// Both constructors start at First(). Any change to the table invalidates
// the walk; First or Last starts it anew.
template <class V>
class omi_UintTableIterator {
public:
  using Compare = int (*)(void const*, void const*);

  explicit omi_UintTableIterator(omi_UintTable<V> const& table) : omi_UintTableIterator(table, nullptr) {}

  omi_UintTableIterator(omi_UintTable<V> const& table, Compare compare)
      : m_Table(table), m_Compare(compare), m_Block(nullptr), m_Slot(0), m_Index(0) {
    First();
  }

  omi_UintTableIterator(omi_UintTableIterator const&) = delete;
  omi_UintTableIterator& operator=(omi_UintTableIterator const&) = delete;

  void First() {
    if (m_Compare == nullptr) {
      EnterForward(0);
    } else {
      Collect();
      m_Index = 0;
    }
  }

  void Last() {
    if (m_Compare == nullptr) {
      EnterBackward(m_Table.TopLength());
    } else {
      Collect();
      m_Index = m_Sorted.Count() == 0 ? 0 : m_Sorted.Count() - 1;
    }
  }

  void Next() noexcept {
    if (IsDone()) return;
    if (m_Compare != nullptr) {
      ++m_Index;
    } else {
      StepForward();
    }
  }

  void Previous() noexcept {
    if (IsDone()) return;
    if (m_Compare != nullptr) {
      m_Index = m_Index == 0 ? m_Sorted.Count() : m_Index - 1;
    } else if (!m_Bits.Previous()) {
      EnterBackward(m_Slot);
    }
  }

  void NextBlock() noexcept {
    if (m_Compare != nullptr) std::abort();
    if (!IsDone()) EnterForward(m_Slot + 1);
  }

  void PreviousBlock() noexcept {
    if (m_Compare != nullptr) std::abort();
    if (!IsDone()) EnterBackward(m_Slot);
  }

  bool IsDone() const noexcept { return m_Compare == nullptr ? m_Block == nullptr : m_Index >= m_Sorted.Count(); }

  unsigned int CurrentKey() const noexcept {
    if (IsDone()) std::abort();
    if (m_Compare != nullptr) return m_Sorted.At(m_Index).Key();
    return (m_Slot << m_Table.TopShift()) | m_Bits.Current();
  }

  V const& CurrentValue() const noexcept {
    if (IsDone()) std::abort();
    if (m_Compare != nullptr) return m_Sorted.At(m_Index).Value();
    return *m_Block->GetCell(m_Bits.Current());
  }

private:
  void StepForward() noexcept {
    if (!m_Bits.Next()) EnterForward(m_Slot + 1);
  }

  // Stands on the first entry of the first block at or after slot.
  void EnterForward(std::uint32_t slot) noexcept {
    for (; slot < m_Table.TopLength(); ++slot) {
      if (Enter(slot)) {
        m_Bits.First();
        return;
      }
    }
    m_Block = nullptr;
  }

  // Stands on the last entry of the last block before slot end.
  void EnterBackward(std::uint32_t end) noexcept {
    for (std::uint32_t slot = end; slot-- > 0;) {
      if (Enter(slot)) {
        m_Bits.Last();
        return;
      }
    }
    m_Block = nullptr;
  }

  bool Enter(std::uint32_t slot) noexcept {
    m_Block = m_Table.TopBlock(slot);
    if (m_Block == nullptr) return false;
    m_Slot = slot;
    m_Bits = omi_BlkBitVectTrav(m_Block->Bits());
    return true;
  }

  // Fills m_Sorted with every entry, in key order, then sorts it.
  void Collect() {
    m_Sorted.Reset(static_cast<unsigned int>(m_Table.Size()));
    for (EnterForward(0); m_Block != nullptr; StepForward()) {
      m_Sorted.Add((m_Slot << m_Table.TopShift()) | m_Bits.Current(), m_Block->GetCell(m_Bits.Current()));
    }
    m_Sorted.Sort(m_Compare);
  }

  omi_UintTable<V> const& m_Table;
  Compare m_Compare;
  typename omi_UintTable<V>::Block const* m_Block;
  std::uint32_t m_Slot;
  omi_BlkBitVectTrav m_Bits;
  omi_UintTableNodeArray<V> m_Sorted;
  std::uint32_t m_Index;
};

#endif
