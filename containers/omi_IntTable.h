#ifndef omi_IntTable_h
#define omi_IntTable_h

#include "mem_Alloc.h"
#include "omi_UintTable.h"

#include <climits>
#include <utility>

// A map from 32-bit signed keys to values of V: two omi_UintTable, one for the
// keys below 0 under their two's-complement negation (so -1 is stored as 1,
// and INT_MIN, whose negation is itself, as 0x80000000), one for the others
// as they are. Keys near zero of either sign thus stay in the first block of
// their table. Invariant: both tables exist and have the same geometry.
template <class V>
class omi_IntTable : public mem_AllocationOperators {
public:
  omi_IntTable() : m_Negative(new omi_UintTable<V>()), m_NonNegative(nullptr) { TakeNonNegative(); }

  explicit omi_IntTable(unsigned long size)
      : m_Negative(new omi_UintTable<V>(size)), m_NonNegative(nullptr) {
    TakeNonNegative(size);
  }

  // The larger start, then the count pairs keys[i], values[i] inserted in order.
  omi_IntTable(unsigned long count, int const* keys, V const* values) : omi_IntTable(count) {
    for (unsigned long index = 0; index < count; ++index) Insert(keys[index], values[index]);
  }

  omi_IntTable(unsigned int highBits, unsigned int blockIndexBits, unsigned int quantum) : omi_IntTable() {
    Initialize(highBits, blockIndexBits, quantum);
  }

  omi_IntTable(omi_IntTable const& other)
      : m_Negative(new omi_UintTable<V>(*other.m_Negative)), m_NonNegative(nullptr) {
    TakeNonNegative(*other.m_NonNegative);
  }

  omi_IntTable& operator=(omi_IntTable const& other) {
    if (&other != this) {
      omi_IntTable copy(other);
      std::swap(m_Negative, copy.m_Negative);
      std::swap(m_NonNegative, copy.m_NonNegative);
    }
    return *this;
  }

  ~omi_IntTable() {
    delete m_Negative;
    delete m_NonNegative;
  }

  omi_IntTable Copy() const { return omi_IntTable(*this); }

  // Empties both tables and gives them this geometry (see omi_UintTable).
  void Initialize(unsigned int highBits, unsigned int blockIndexBits, unsigned int quantum) {
    m_Negative->Initialize(highBits, blockIndexBits, quantum);
    m_NonNegative->Initialize(highBits, blockIndexBits, quantum);
  }

  bool Insert(int key, V const& value) { return Side(key).Insert(Stored(key), value); }
  bool Remove(int key) { return Side(key).Remove(Stored(key)); }
  V& Get(int key) { return Side(key).Get(Stored(key)); }
  V const& ConstGet(int key) const { return Side(key).ConstGet(Stored(key)); }
  bool ConstGetValue(int key, V& value) const { return Side(key).ConstGetValue(Stored(key), value); }
  bool IsMember(int key) const noexcept { return Side(key).IsMember(Stored(key)); }

  void Clear() noexcept {
    m_Negative->Clear();
    m_NonNegative->Clear();
  }

  bool IsEmpty() const noexcept { return m_Negative->IsEmpty() && m_NonNegative->IsEmpty(); }
  int Size() const noexcept { return m_Negative->Size() + m_NonNegative->Size(); }
  unsigned int KeyModulus() const noexcept { return m_NonNegative->KeyModulus(); }

  // The block that holds key, in the table of key's sign, or null.
  typename omi_UintTable<V>::Block* FindTableBlock(int key) const noexcept {
    return Side(key).FindTableBlock(Stored(key));
  }

  omi_UintTable<V> const& Negative() const noexcept { return *m_Negative; }
  omi_UintTable<V> const& NonNegative() const noexcept { return *m_NonNegative; }

  // The key under which key is stored in the table of its sign.
  static unsigned int Stored(int key) noexcept {
    return key < 0 ? 0u - static_cast<unsigned int>(key) : static_cast<unsigned int>(key);
  }

  // The signed key whose two's-complement bits are bits.
  static int FromBits(unsigned int bits) noexcept {
    return bits <= static_cast<unsigned int>(INT_MAX) ? static_cast<int>(bits) : -static_cast<int>(~bits) - 1;
  }

private:
  omi_UintTable<V>& Side(int key) const noexcept { return key < 0 ? *m_Negative : *m_NonNegative; }

  // The second table is made once the first is held, so that a failure
  // frees the first.
  template <class... Arguments>
  void TakeNonNegative(Arguments const&... arguments) {
    try {
      m_NonNegative = new omi_UintTable<V>(arguments...);
    } catch (...) {
      delete m_Negative;
      throw;
    }
  }

  omi_UintTable<V>* m_Negative;
  omi_UintTable<V>* m_NonNegative;
};

#endif
