#ifndef cow_Btree_h
#define cow_Btree_h

#include "cow_BtreeNode.h"

#include <cstdint>

// An ordered map: a height-balanced binary tree with one entry per node,
// keys ordered by omi_Compare. Nodes are held by copy-on-write handles, so
// a copied tree shares every node and a writer unshares only the nodes on
// the paths it walks (and a sibling that a rotation moves).
//
// Invariants: keys ascend in order of the tree and are distinct; every
// node's MaxDepth is the height of its subtree; m_Size counts the nodes.
// A missing key reads as the stored null value (default: V()).
template <class K, class V>
class cow_Btree {
public:
  using Node = cow_BtreeNode<K, V>;
  using Link = typename Node::Link;

  cow_Btree() : m_Size(0), m_NullValue() {}

  // A new tree on the heap that shares this one's nodes; the caller owns it.
  cow_Btree* Copy() const { return new cow_Btree(*this); }

  // Adds key with value, or gives an existing key the new value. Returns
  // true when the key was added.
  bool Insert(K const& key, V const& value) {
    if (V* present = Find(key)) {
      *present = value;
      return false;
    }
    Add(key, value);
    return true;
  }

  // Adds key with value unless the key is present, whose value then stays
  // and whose nodes stay shared. Returns true when the key was added.
  bool InsertUnlessMember(K const& key, V const& value) {
    if (IsMember(key)) return false;
    Add(key, value);
    return true;
  }

  // Removes key; an absent key changes nothing, not even the sharing.
  bool Remove(K const& key) {
    if (!IsMember(key)) return false;
    Node::Remove(m_Root, key);
    if (m_Root.HasValue()) Node::Balance(m_Root);
    --m_Size;
    return true;
  }

  // Writable access to the value of key, its path made private; for a
  // missing key, the stored null value (a write changes that value).
  V& Get(K const& key) {
    Node* node = Node::Find(m_Root, key);
    return node ? node->GetValue() : m_NullValue;
  }

  V const& ConstGet(K const& key) const {
    Node const* node = Node::ConstFind(m_Root, key);
    return node ? node->ConstGetValue() : m_NullValue;
  }

  // The value of key, its path made private, or null when it is absent.
  V* Find(K const& key) {
    Node* node = Node::Find(m_Root, key);
    return node ? &node->GetValue() : nullptr;
  }

  V const* ConstFind(K const& key) const {
    Node const* node = Node::ConstFind(m_Root, key);
    return node ? &node->ConstGetValue() : nullptr;
  }

  bool IsMember(K const& key) const { return Node::ConstFind(m_Root, key) != nullptr; }

  // Lets go of every node; the nodes go when their last owner does.
  void Clear() noexcept {
    m_Root.DropReference();
    m_Size = 0;
  }

  bool IsEmpty() const { return m_Size == 0; }
  int Size() const { return m_Size; }
  // The height of the tree: 0 for an empty tree and for a single node.
  int Depth() const { return m_Root.IsNull() ? 0 : m_Root.ConstGet()->MaxDepth(); }

  void SetNullValue(V const& value) { m_NullValue = value; }
  V const& GetNullValue() const { return m_NullValue; }

  // The root handle, for iterators, tests and diagnostics.
  Link const& Root() const { return m_Root; }

private:
  // Adds an absent key.
  void Add(K const& key, V const& value) {
    if (m_Root.IsNull()) {
      m_Root = new Node(key, value);
    } else {
      Node::InsertUnlessMember(m_Root, key, value);
      Node::Balance(m_Root);
    }
    ++m_Size;
  }

  Link m_Root;
  std::int32_t m_Size;
  V m_NullValue;
};

#endif
