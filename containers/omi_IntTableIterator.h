#ifndef omi_IntTableIterator_h
#define omi_IntTableIterator_h

#include "omi_IntTable.h"
#include "omi_UintTableIterator.h"
#include "omi_UintTableNode.h"

#include <cstdint>
#include <cstdlib>

// A walk over the entries of an omi_IntTable in either direction.
//
// Without a comparison function the keys come in ascending signed order: the
// negative table first, from its last entry backward (its stored keys are the
// negations, so the largest stored key is the lowest key), then the
// non-negative table from its start. Invariant: m_Phase names the walker
// that stands on the current entry; the other one is not looked at.
//
// With a comparison function (see omi_UintTableNode; the node keys are the
// bits of the signed keys), First and Last collect every entry in ascending
// signed order and sort them, so equal ones stay in that order.
//
// Both constructors start at First(). Any change to the table invalidates
// the walk; First or Last starts it anew.
template <class V>
class omi_IntTableIterator {
public:
  using Compare = int (*)(void const*, void const*);

  explicit omi_IntTableIterator(omi_IntTable<V> const& table) : omi_IntTableIterator(table, nullptr) {}

  omi_IntTableIterator(omi_IntTable<V> const& table, Compare compare)
      : m_Table(table), m_Negative(table.Negative()), m_NonNegative(table.NonNegative()), m_Compare(compare), m_Index(0),
        m_Phase(Phase::kDone) {
    First();
  }

  omi_IntTableIterator(omi_IntTableIterator const&) = delete;
  omi_IntTableIterator& operator=(omi_IntTableIterator const&) = delete;

  void First() {
    if (m_Compare != nullptr) {
      Collect();
      m_Index = 0;
      return;
    }
    m_Negative.Last();
    if (!m_Negative.IsDone()) {
      m_Phase = Phase::kNegative;
    } else {
      EnterNonNegative();
    }
  }

  void Last() {
    if (m_Compare != nullptr) {
      Collect();
      m_Index = m_Sorted.Count() == 0 ? 0 : m_Sorted.Count() - 1;
      return;
    }
    m_NonNegative.Last();
    if (!m_NonNegative.IsDone()) {
      m_Phase = Phase::kNonNegative;
    } else {
      EnterHighestNegative();
    }
  }

  void Next() noexcept {
    if (m_Compare != nullptr) {
      if (!IsDone()) ++m_Index;
    } else if (m_Phase == Phase::kNegative) {
      m_Negative.Previous();
      if (m_Negative.IsDone()) EnterNonNegative();
    } else if (m_Phase == Phase::kNonNegative) {
      m_NonNegative.Next();
      if (m_NonNegative.IsDone()) m_Phase = Phase::kDone;
    }
  }

  void Previous() noexcept {
    if (m_Compare != nullptr) {
      if (!IsDone()) m_Index = m_Index == 0 ? m_Sorted.Count() : m_Index - 1;
    } else if (m_Phase == Phase::kNonNegative) {
      m_NonNegative.Previous();
      if (m_NonNegative.IsDone()) EnterHighestNegative();
    } else if (m_Phase == Phase::kNegative) {
      m_Negative.Next();
      if (m_Negative.IsDone()) m_Phase = Phase::kDone;
    }
  }

  bool IsDone() const noexcept { return m_Compare == nullptr ? m_Phase == Phase::kDone : m_Index >= m_Sorted.Count(); }

  int CurrentKey() const noexcept {
    if (IsDone()) std::abort();
    if (m_Compare != nullptr) return omi_IntTable<V>::FromBits(m_Sorted.At(m_Index).Key());
    if (m_Phase == Phase::kNegative) return omi_IntTable<V>::FromBits(0u - m_Negative.CurrentKey());
    return static_cast<int>(m_NonNegative.CurrentKey());
  }

  V const& CurrentValue() const noexcept {
    if (IsDone()) std::abort();
    if (m_Compare != nullptr) return m_Sorted.At(m_Index).Value();
    return m_Phase == Phase::kNegative ? m_Negative.CurrentValue() : m_NonNegative.CurrentValue();
  }

private:
  enum class Phase { kNegative, kNonNegative, kDone };

  void EnterNonNegative() noexcept {
    m_NonNegative.First();
    m_Phase = m_NonNegative.IsDone() ? Phase::kDone : Phase::kNonNegative;
  }

  // Stands on the highest negative key: the lowest stored one.
  void EnterHighestNegative() noexcept {
    m_Negative.First();
    m_Phase = m_Negative.IsDone() ? Phase::kDone : Phase::kNegative;
  }

  void Collect() {
    m_Sorted.Reset(static_cast<unsigned int>(m_Table.Size()));
    // The node keys are the signed keys' bits: a stored negative key's
    // negation.
    for (m_Negative.Last(); !m_Negative.IsDone(); m_Negative.Previous()) {
      m_Sorted.Add(0u - m_Negative.CurrentKey(), &m_Negative.CurrentValue());
    }
    for (m_NonNegative.First(); !m_NonNegative.IsDone(); m_NonNegative.Next()) {
      m_Sorted.Add(m_NonNegative.CurrentKey(), &m_NonNegative.CurrentValue());
    }
    m_Sorted.Sort(m_Compare);
  }

  omi_IntTable<V> const& m_Table;
  omi_UintTableIterator<V> m_Negative;
  omi_UintTableIterator<V> m_NonNegative;
  Compare m_Compare;
  omi_UintTableNodeArray<V> m_Sorted;
  std::uint32_t m_Index;
  Phase m_Phase;
};

#endif
