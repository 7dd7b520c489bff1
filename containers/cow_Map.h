#ifndef cow_Map_h
#define cow_Map_h

#include "cow_MapKeyTraits.h"
#include "cow_MapNode.h"

#include <cstdint>
#include <cstdlib>

// An unordered map on a digital search tree: the walk for a key takes, at
// depth d, the left link for key bit d equal to 0 and the right link for 1
// (cow_MapKeyTraits gives the bits), and stops at the node holding an equal
// key. No order is compared and nothing is balanced; the depth follows the
// keys' bit patterns, so keys dense in their low bits give a short tree.
//
// Nodes are held by copy-on-write handles: a copied map shares every node,
// and a writer unshares only the nodes on the path it walks.
//
// Invariants: every node holds a live entry whose key's bits lead from the
// root to it; no two nodes hold equal keys; m_Count is the number of nodes
// and m_Root is null exactly when it is 0.
// Get and ConstGet of an absent key are programming errors and call abort().
// K and V are expected to copy without throwing in Remove, which moves
// entries up a path one assignment at a time.
template <class K, class V>
class cow_Map {
public:
  using Node = cow_MapNode<K, V>;
  using Link = typename Node::Link;
  using Traits = cow_MapKeyTraits<K>;

  cow_Map() : m_Count(0) {}

  // Inserts key with value, or gives an existing key the new value (the
  // size stays). The path to the key is made private. Returns true.
  bool Insert(K const& key, V const& value) {
    Link* link = &m_Root;
    for (std::uint32_t depth = 0;; ++depth) {
      Node* node = link->Get();
      if (node == nullptr) {
        *link = new Node(key, value);
        ++m_Count;
        return true;
      }
      if (Traits::Equal(node->m_Key, key)) {
        node->m_Value = value;
        return true;
      }
      link = Traits::Bit(key, depth) ? &node->m_Right : &node->m_Left;
    }
  }

  // Removes key. An absent key changes nothing, not even the sharing of
  // nodes. Otherwise the path to the key's node is made private, and along
  // one downward path from there (right child first) each entry moves up one
  // level; the node it leaves last is dropped. Every entry stays on its own
  // key's path, so every walk still finds it.
  bool Remove(K const& key) {
    if (!IsMember(key)) return false;
    Link* link = &m_Root;
    for (std::uint32_t depth = 0;; ++depth) {
      if (Traits::Equal(link->ConstGet()->m_Key, key)) break;
      Node* node = link->Get();
      link = Traits::Bit(key, depth) ? &node->m_Right : &node->m_Left;
    }
    for (;;) {
      Node const* current = link->ConstGet();
      if (current->m_Left.IsNull() && current->m_Right.IsNull()) break;
      Node* node = link->Get();
      Link* child = node->m_Right.HasValue() ? &node->m_Right : &node->m_Left;
      Node const* next = child->ConstGet();
      node->m_Key = next->m_Key;
      node->m_Value = next->m_Value;
      link = child;
    }
    // A leaf is dropped rather than unshared: its other owners keep it.
    link->DropReference();
    --m_Count;
    return true;
  }

  // Writable access to the value of a present key; the path is made private.
  V& Get(K const& key) {
    Link* link = &m_Root;
    for (std::uint32_t depth = 0;; ++depth) {
      Node* node = link->Get();
      if (node == nullptr) std::abort();
      if (Traits::Equal(node->m_Key, key)) return node->m_Value;
      link = Traits::Bit(key, depth) ? &node->m_Right : &node->m_Left;
    }
  }

  // The value of a present key; nothing is copied.
  V const& ConstGet(K const& key) const {
    Node const* node = Find(key);
    if (node == nullptr) std::abort();
    return node->m_Value;
  }

  bool IsMember(K const& key) const { return Find(key) != nullptr; }

  // Lets go of every node; the nodes go when their last owner does.
  void Clear() noexcept {
    m_Root.DropReference();
    m_Count = 0;
  }

  bool IsEmpty() const { return m_Count == 0; }
  int Size() const { return m_Count; }

  // The root handle, for iterators, tests and diagnostics.
  Link const& Root() const { return m_Root; }

private:
  Node const* Find(K const& key) const {
    Node const* node = m_Root.ConstGet();
    for (std::uint32_t depth = 0; node != nullptr; ++depth) {
      if (Traits::Equal(node->m_Key, key)) return node;
      node = (Traits::Bit(key, depth) ? node->m_Right : node->m_Left).ConstGet();
    }
    return nullptr;
  }

  Link m_Root;
  std::int32_t m_Count;
};

#endif
