#ifndef omi_Compare_h
#define omi_Compare_h

#include "atr_NaturalOrder.h"
#include "atr_StringBase.h"

#include <cstring>
#include <type_traits>

// The order of keys in the ordered containers: negative, zero or positive.
// Numbers compare by value. Strings compare in natural order when
// atr_getNaturalOrder() says so, else byte by byte as unsigned characters,
// the shorter first; a null string is the empty text. The setting is read at
// every comparison.
inline int omi_Compare(atr_StringBase const& left, atr_StringBase const& right) {
  if (atr_getNaturalOrder()) return strnatcmp(left.CStr(), right.CStr());
  return left.Compare(right);
}

// Excluded for the string classes, which would otherwise bind here as an
// exact match instead of reaching the overload above through their base.
template <class K, std::enable_if_t<!std::is_base_of<atr_StringBase, K>::value, int> = 0>
inline int omi_Compare(K const& left, K const& right) {
  static_assert(std::is_arithmetic<K>::value || std::is_enum<K>::value,
                "omi_Compare needs an overload for this key type");
  return left < right ? -1 : (right < left ? 1 : 0);
}

#endif
