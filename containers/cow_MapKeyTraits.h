#ifndef cow_MapKeyTraits_h
#define cow_MapKeyTraits_h

#include "atr_StringBase.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

// What cow_Map needs of a key type: the bit that chooses the branch at each
// depth of its digital search tree, and equality. Another key type (a struct
// of words, say) joins by specialising cow_MapKeyTraits<K> with
//   static bool Bit(K const&, std::uint32_t depth);
//   static bool Equal(K const&, K const&);
// Bit may be any function of key and depth; the tree stays correct because
// keys are compared whole, and it stays short when equal keys are the only
// ones that agree on many bits.
template <class K, class Enable = void>
struct cow_MapKeyTraits {
  static_assert(sizeof(K) == 0, "cow_Map needs a cow_MapKeyTraits specialisation for this key type");
};

// Integers and enumerations: bit depth of the key counted from the least
// significant, the depth taken modulo 32, so only the low 32 bits are read.
template <class K>
struct cow_MapKeyTraits<K, std::enable_if_t<std::is_integral<K>::value || std::is_enum<K>::value> > {
  static bool Bit(K const& key, std::uint32_t depth) {
    return (LowWord(key) >> (depth & 31u)) & 1u;
  }
  static bool Equal(K const& left, K const& right) { return left == right; }

private:
  // Conversion to an unsigned type keeps the value modulo 2^32, negatives included.
  static std::uint32_t LowWord(K const& key) {
    if constexpr (std::is_enum<K>::value) {
      return static_cast<std::uint32_t>(static_cast<std::underlying_type_t<K> >(key));
    } else {
      return static_cast<std::uint32_t>(key);
    }
  }
};

// Strings: the walk alternates between the two ends of the text, so keys
// sharing a long prefix or suffix still part early. Even depth d reads the
// character d / 2 from the front, odd d the character as far from the back;
// the bit is that character's lowest. Past the length the bit is 0. Equality
// is that of strcmp, a null string being the empty text.
template <class K>
struct cow_MapKeyTraits<K, std::enable_if_t<std::is_base_of<atr_StringBase, K>::value> > {
  static bool Bit(K const& key, std::uint32_t depth) {
    std::uint32_t const length = static_cast<std::uint32_t>(key.Length());
    if (depth > length) return false;
    // Depth at most the length keeps the index within the characters and
    // their terminating zero (CStr() is "" for a null string).
    std::uint32_t const index = (depth & 1u) ? length - depth / 2 - 1 : depth / 2;
    return static_cast<unsigned char>(key.CStr()[index]) & 1u;
  }
  static bool Equal(K const& left, K const& right) { return std::strcmp(left.CStr(), right.CStr()) == 0; }
};

#endif
