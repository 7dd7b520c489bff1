#ifndef omi_HashTable_h
#define omi_HashTable_h

#include "atr_StringBase.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// How omi_HashTable hashes and compares a key type: numbers by value,
// strings by their bytes.
template <class K, class Enable = void>
struct omi_HashTraits {
  static_assert(std::is_integral<K>::value, "omi_HashTraits needs a specialisation for this key type");
  static std::uint64_t Hash(K key) { return static_cast<std::uint64_t>(key); }
  static bool Equal(K left, K right) { return left == right; }
};

template <class K>
struct omi_HashTraits<K, std::enable_if_t<std::is_base_of<atr_StringBase, K>::value> > {
  static std::uint64_t Hash(K const& key) {
    // FNV-1a over the bytes.
    std::uint64_t hash = 14695981039346656037ull;
    char const* text = key.CStr();
    for (int i = 0; i < key.Length(); ++i) {
      hash ^= static_cast<unsigned char>(text[i]);
      hash *= 1099511628211ull;
    }
    return hash;
  }
  static bool Equal(K const& left, K const& right) { return left.Compare(right) == 0; }
};

// A map by hash for keys that are only ever added, never removed: open
// addressing with linear probing in a power-of-two table that is at most half
// full, so a lookup is a multiplication, a shift and usually one probe. For
// indexes on hot paths where no order is needed.
//
// Invariant: every key is in the first free-or-matching slot of its probe
// sequence; the table doubles before it becomes more than half full.
template <class K, class V, class Traits = omi_HashTraits<K> >
class omi_HashTable {
public:
  omi_HashTable() = default;

  // Adds key with value; an existing key keeps its value. Answers whether
  // the key was added.
  bool Insert(K const& key, V const& value) {
    if (2 * (m_Size + 1) > m_Slots.size()) Grow();
    Slot& slot = m_Slots[Probe(key)];
    if (slot.m_Used) return false;
    slot.m_Used = true;
    slot.m_Key = key;
    slot.m_Value = value;
    ++m_Size;
    return true;
  }

  // The value of key, or null.
  V const* Find(K const& key) const {
    if (m_Size == 0) return nullptr;
    Slot const& slot = m_Slots[Probe(key)];
    return slot.m_Used ? &slot.m_Value : nullptr;
  }

  bool IsMember(K const& key) const { return Find(key) != nullptr; }
  int Size() const { return static_cast<int>(m_Size); }
  bool IsEmpty() const { return m_Size == 0; }
  void Clear() {
    m_Slots.clear();
    m_Size = 0;
    m_Shift = 64;
  }

private:
  struct Slot {
    bool m_Used = false;
    K m_Key{};
    V m_Value{};
  };

  // The slot that holds key, or the free slot where it would go.
  std::size_t Probe(K const& key) const {
    std::size_t mask = m_Slots.size() - 1;
    // Fibonacci hashing spreads keys that differ only in their high or low bits.
    std::size_t index = static_cast<std::size_t>((Traits::Hash(key) * 11400714819323198485ull) >> m_Shift);
    while (m_Slots[index].m_Used && !Traits::Equal(m_Slots[index].m_Key, key)) index = (index + 1) & mask;
    return index;
  }

  void Grow() {
    std::vector<Slot> old = std::move(m_Slots);
    std::size_t capacity = old.empty() ? 16 : 2 * old.size();
    m_Slots.assign(capacity, Slot());
    m_Shift = 64;
    for (std::size_t c = capacity; c > 1; c >>= 1) --m_Shift;
    for (Slot& slot : old) {
      if (slot.m_Used) m_Slots[Probe(slot.m_Key)] = std::move(slot);
    }
  }

  std::vector<Slot> m_Slots;
  std::size_t m_Size = 0;
  int m_Shift = 64;
};

#endif
