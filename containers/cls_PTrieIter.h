#ifndef cls_PTrieIter_h
#define cls_PTrieIter_h

#include "cls_PTrie.h"
#include "cls_PTrieKey.h"
#include "cls_PTrieLeafNode.h"
#include "cls_PTrieNode.h"

#include <cstdlib>

// A walk over a cls_PTrie in ascending key order, word N - 1 most
// significant. It keeps the path from the root to the current leaf: a step
// climbs to the nearest node whose set side it has not yet visited and goes
// down that side's clear sides to the lowest leaf there, so a whole walk
// passes each node twice at most. The path lives in the walk (a trie of N
// words is at most 32 * N internal nodes deep). The constructor starts at
// First(). Any change to the trie invalidates the walk until First() starts
// it anew.
//
// Invariant: m_Current is null exactly when the walk is done, and then
// m_Depth is zero; otherwise m_Path[0 .. m_Depth) are the internal nodes
// from the root down to m_Current.
template <class K, class V, int N>
class cls_PTrieIter {
public:
  using Trie = cls_PTrie<K, V, N>;
  using Leaf = cls_PTrieLeafNode<K, V, N>;
  using Node = cls_PTrieNode<K, V, N>;

  explicit cls_PTrieIter(Trie const& trie) : m_Current(nullptr), m_Depth(0), m_Trie(trie) { First(); }

  void First() {
    m_Depth = 0;
    m_Current = nullptr;
    if (m_Trie.m_Root != nullptr) Descend(m_Trie.m_Root);
  }

  // A walk that is done stays done.
  void Next() {
    if (IsDone()) return;
    Node const* child = m_Current;
    m_Current = nullptr;
    while (m_Depth > 0) {
      Node const* const parent = m_Path[m_Depth - 1];
      Node const* const set = parent->Child(true);
      // Up from the clear side: the set side follows.
      if (child != set) {
        Descend(set);
        return;
      }
      child = parent;
      --m_Depth;
    }
  }

  bool IsDone() const noexcept { return m_Current == nullptr; }

  // The current entry; asking a walk that is done is a programming error.
  K const& CurrentKey() const noexcept { return Current().Key(); }
  V const& CurrentValue() const noexcept { return Current().Value(); }

private:
  // Goes down the clear sides from node to the lowest leaf below it.
  void Descend(Node const* node) {
    for (Node const* clear = node->Child(false); clear != nullptr; clear = node->Child(false)) {
      if (m_Depth >= cls_PTrieKey<K, N>::kBits) std::abort();
      m_Path[m_Depth++] = node;
      node = clear;
    }
    m_Current = static_cast<Leaf const*>(node);
  }

  Leaf const& Current() const noexcept {
    if (m_Current == nullptr) std::abort();
    return *m_Current;
  }

  Leaf const* m_Current;
  int m_Depth;
  Node const* m_Path[cls_PTrieKey<K, N>::kBits];
  Trie const& m_Trie;
};

#endif
