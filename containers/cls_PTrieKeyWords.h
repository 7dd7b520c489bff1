#ifndef cls_PTrieKeyWords_h
#define cls_PTrieKeyWords_h

#include <cstdint>
#include <limits>

// How a key type K becomes the 32-bit words of a cls_PTrieKey<K, N>. A key
// type joins by specialising cls_PTrieKeyWords<K> with
//   static void ToWords(K const& key, std::uint32_t (&words)[N]);
// which fills all N words; word N - 1 is the most significant, so it decides
// the order of iteration first. The array's bound ties the specialisation to
// one N: a trie declared with another word count does not compile.
// Two keys are the same trie key exactly when their words are equal, so the
// conversion must give distinct keys distinct words.
template <class K>
struct cls_PTrieKeyWords {
  static_assert(sizeof(K) == 0, "cls_PTrie needs a cls_PTrieKeyWords specialisation for this key type");
};

// A 32-bit id (a class id, say) is its own single word.
template <>
struct cls_PTrieKeyWords<unsigned int> {
  static_assert(std::numeric_limits<unsigned int>::digits == 32, "unsigned int keys are one 32-bit word");

  static void ToWords(unsigned int key, std::uint32_t (&words)[1]) noexcept { words[0] = key; }
};

// An address is two words through its integer value: word 0 the low half,
// word 1 the high half (0 where addresses have 32 bits), so pointers come
// in the order of their numeric values. The pointer is never dereferenced.
template <class T>
struct cls_PTrieKeyWords<T*> {
  static_assert(std::numeric_limits<std::uintptr_t>::digits <= 64, "an address fits in two words");

  static void ToWords(T* key, std::uint32_t (&words)[2]) noexcept {
    std::uint64_t const value = reinterpret_cast<std::uintptr_t>(key);
    words[0] = static_cast<std::uint32_t>(value);
    words[1] = static_cast<std::uint32_t>(value >> 32);
  }
};

#endif
