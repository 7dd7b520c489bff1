#ifndef cls_PTrieKey_h
#define cls_PTrieKey_h

#include "cls_PTrieKeyWords.h"

#include <cstdint>
#include <cstdlib>

// A key of a cls_PTrie seen as a string of 32 * N bits: bit b is bit b % 32
// of word b / 32, counted from the least significant, so the bit with the
// highest number is the most significant bit of word N - 1. The words come
// from K through cls_PTrieKeyWords<K>.
// Invariant: all N words are always set; a default key is all zeros.
template <class K, int N>
class cls_PTrieKey {
  static_assert(N >= 1 && N <= 1024, "a trie key has at least one and a bounded number of words");

public:
  // The number of bits, and the answer of a trie walk that needs no new branch.
  static constexpr int kBits = 32 * N;

  cls_PTrieKey() noexcept { Zero(); }
  explicit cls_PTrieKey(K const& key) { *this = key; }

  cls_PTrieKey& operator=(K const& key) {
    cls_PTrieKeyWords<K>::ToWords(key, m_Words);
    return *this;
  }

  void Zero() noexcept {
    for (std::uint32_t& word : m_Words) word = 0;
  }

  // Bit numbers outside the key are programming errors.
  bool BitSet(int bit) const noexcept {
    if (bit < 0 || bit >= kBits) std::abort();
    return (m_Words[bit / 32] >> (bit % 32)) & 1u;
  }

  // The highest bit at or below start at which this key and other differ,
  // or -1 if they agree on all of those bits.
  int FirstBit(int start, cls_PTrieKey const& other) const noexcept {
    if (start >= kBits) std::abort();
    if (start < 0) return -1;
    // The first word looked at keeps only its bits at or below start.
    std::uint32_t mask = 0xffffffffu >> (31 - start % 32);
    for (int word = start / 32; word >= 0; --word) {
      std::uint32_t const difference = (m_Words[word] ^ other.m_Words[word]) & mask;
      if (difference != 0) return word * 32 + HighestBit(difference);
      mask = 0xffffffffu;
    }
    return -1;
  }

private:
  // The number of the most significant set bit of a non-zero word.
  static int HighestBit(std::uint32_t word) noexcept {
    int bit = 0;
    for (int step = 16; step > 0; step /= 2) {
      if ((word >> step) != 0) {
        word >>= step;
        bit += step;
      }
    }
    return bit;
  }

  std::uint32_t m_Words[N];
};

#endif
