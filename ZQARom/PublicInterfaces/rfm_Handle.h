#ifndef rfm_Handle_h
#define rfm_Handle_h

#include "ZQABasExport.h"

#include <cstdint>

// The name of an object in a database: the index of its linkage group,
// shifted left by 9, or'd with its slot in the group (1 to 511). Slot 0 of
// every group is the group's link to the next, so multiples of 512 name no
// object, and 0 is the null handle that ends a chain.
class ZQA_EXPORT rfm_Handle {
public:
  static constexpr int kSlotBits = 9;
  static constexpr int kSlotsPerGroup = 1 << kSlotBits;

  constexpr rfm_Handle() = default;
  constexpr explicit rfm_Handle(int value) : m_Value(value) {}
  static constexpr rfm_Handle Make(int group, int slot) { return rfm_Handle((group << kSlotBits) | slot); }

  constexpr int Value() const { return m_Value; }
  // Read as unsigned, so that a damaged negative value names a group far
  // beyond any file rather than a negative index.
  constexpr std::uint32_t Group() const { return static_cast<std::uint32_t>(m_Value) >> kSlotBits; }
  constexpr int Slot() const { return m_Value & (kSlotsPerGroup - 1); }
  constexpr bool IsNull() const { return m_Value == 0; }

  constexpr bool operator==(rfm_Handle other) const { return m_Value == other.m_Value; }
  constexpr bool operator!=(rfm_Handle other) const { return m_Value != other.m_Value; }
  constexpr bool operator<(rfm_Handle other) const { return m_Value < other.m_Value; }

private:
  int m_Value = 0;
};

#endif
