#ifndef cls_PTrieIter_h
#define cls_PTrieIter_h

#include "cls_PTrie.h"
#include "cls_PTrieKey.h"
#include "cls_PTrieLeafNode.h"

#include <cstdlib>

// A walk over a cls_PTrie in ascending key order, word N - 1 most
// significant. It keeps only the current leaf and its key: each step walks
// down from the root along that key and turns to the next branch on the way
// back, so a step costs one descent and no node but the current leaf is
// remembered. The constructor starts at First(). Any change to the trie
// invalidates the walk until First() starts it anew.
//
// Invariant: m_Current is null exactly when the walk is done, and then
// m_Cursor is zero; otherwise m_Cursor holds m_Current's key.
template <class K, class V, int N>
class cls_PTrieIter {
public:
  using Trie = cls_PTrie<K, V, N>;
  using Leaf = cls_PTrieLeafNode<K, V, N>;

  explicit cls_PTrieIter(Trie const& trie) : m_Current(nullptr), m_Trie(trie) { First(); }

  void First() {
    m_Cursor.Zero();
    m_Current = nullptr;
    m_Trie.Next(*this);
  }

  // A walk that is done stays done: a step from the zero cursor with no
  // current leaf would start over at the first entry.
  void Next() {
    if (!IsDone()) m_Trie.Next(*this);
  }

  bool IsDone() const noexcept { return m_Current == nullptr; }

  // The current entry; asking a walk that is done is a programming error.
  K const& CurrentKey() const noexcept { return Current().Key(); }
  V const& CurrentValue() const noexcept { return Current().Value(); }

private:
  friend Trie;

  Leaf const& Current() const noexcept {
    if (m_Current == nullptr) std::abort();
    return *m_Current;
  }

  cls_PTrieKey<K, N> m_Cursor;
  Leaf const* m_Current;
  Trie const& m_Trie;
};

#endif
