#ifndef cow_ConstMapIterator_h
#define cow_ConstMapIterator_h

#include "cow_Map.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

// Read-only iteration over a snapshot of a cow_Map, in the tree's pre-order
// (node, left subtree, right subtree), which depends on the order of
// insertion. The iterator holds its own share of the root, so a writer on
// the map copies the nodes it changes and the snapshot stays as it was.
//
// Invariant: m_Nodes holds the snapshot's nodes in iteration order followed
// by one null end mark, and m_Index points at or before that mark.
template <class K, class V>
class cow_ConstMapIterator {
public:
  using Node = cow_MapNode<K, V>;

  // Positioned on the first entry.
  explicit cow_ConstMapIterator(cow_Map<K, V> const& map) : cow_ConstMapIterator(map, 0) { First(); }

  void First() {
    Nodes();
    m_Index = 0;
  }

  void Next() {
    if (!IsDone()) ++m_Index;
  }

  bool IsDone() const { return m_Nodes[m_Index] == nullptr; }

  K const& CurrentKey() const { return Current()->m_Key; }
  V const& CurrentValue() const { return Current()->m_Value; }

protected:
  // Shares the root without collecting, for a derived iterator that
  // collects in its own First().
  cow_ConstMapIterator(cow_Map<K, V> const& map, int)
      : m_Root(map.Root()), m_Count(map.Size()), m_Index(0), m_Nodes(1, nullptr) {}

  // Fills m_Nodes with the snapshot in pre-order and the end mark. The walk
  // keeps its own stack of right subtrees, as deep as the tree, instead of
  // recursing.
  void Nodes() {
    m_Nodes.clear();
    m_Nodes.reserve(static_cast<std::size_t>(m_Count) + 1);
    std::vector<Node const*> pending;
    Node const* node = m_Root.ConstGet();
    while (node != nullptr) {
      m_Nodes.push_back(node);
      Node const* left = node->m_Left.ConstGet();
      Node const* right = node->m_Right.ConstGet();
      if (left != nullptr) {
        if (right != nullptr) pending.push_back(right);
        node = left;
      } else if (right != nullptr) {
        node = right;
      } else if (!pending.empty()) {
        node = pending.back();
        pending.pop_back();
      } else {
        node = nullptr;
      }
    }
    m_Nodes.push_back(nullptr);
  }

  Node const* Current() const {
    if (IsDone()) std::abort();
    return m_Nodes[m_Index];
  }

  typename Node::Link m_Root;
  std::int32_t m_Count;
  std::size_t m_Index;
  std::vector<Node const*> m_Nodes;
};

#endif
