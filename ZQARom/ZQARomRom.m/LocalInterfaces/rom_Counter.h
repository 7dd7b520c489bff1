#ifndef rom_Counter_h
#define rom_Counter_h

#include "mem_Alloc.h"

#include <cstdint>
#include <new>
#include <type_traits>

// The shared reference count of a rom_CountedHld: one signed 32-bit count
// in a tiny allocation of its own, so that the holder layout matches
// cow_CountedHld. It also carries the persistence layer's two checks on
// counted handles, which raise assertions instead of acting on a bad state.
//
// Invariant: while any holder still holds a share, the count is at least 1;
// a count below 1 means every holder pointing at it has given its share up.
class rom_Counter {
public:
  // A count of 1 in storage from the tiny allocator; throws on exhaustion.
  static rom_Counter* New() { return ::new (mem_OperatorNewTinyThrow(sizeof(rom_Counter))) rom_Counter; }
  static void Free(rom_Counter* counter) noexcept { mem_Free(counter); }

  std::int32_t References() const { return m_References; }
  void Raise() { ++m_References; }
  // Returns the count left.
  std::int32_t Lower() { return --m_References; }

  // Raises the assertion "references > 0" when the count is below 1.
  void AssertPositive() const;
  // Raises the assertion "CountedHld has no value".
  [[noreturn]] static void AbortNoValue();

private:
  rom_Counter() = default;

  std::int32_t m_References = 1;
};

// Released with mem_Free, never destroyed.
static_assert(std::is_trivially_destructible_v<rom_Counter> && sizeof(rom_Counter) == 4);

#endif
