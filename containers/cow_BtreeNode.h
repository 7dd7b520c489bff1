#ifndef cow_BtreeNode_h
#define cow_BtreeNode_h

#include "cow_COW.h"
#include "omi_Compare.h"

#include <algorithm>
#include <cstdint>

// A node of cow_Btree: one entry, the subtrees of lower keys (left) and of
// higher keys (right), and MaxDepth, the height of the subtree it roots (0
// for a leaf, else 1 plus the greater of its children's). Children are
// copy-on-write handles; the operations below work on the handle (link)
// that holds a node and make each node private before they change it, so
// that a shared subtree is copied only along the path a writer walks.
//
// Balancing uses single rotations only, triggered when the heights of the
// two sides differ by more than 1, where a missing child counts as 0 like a
// leaf. A missing child and a leaf therefore look alike to Balance, and the
// height bound of a true AVL tree is not promised.
template <class K, class V>
class cow_BtreeNode {
public:
  using Link = cow_COW<cow_BtreeNode, cow_Direct<cow_BtreeNode> >;

  cow_BtreeNode(K const& key, V const& value) : m_Key(key), m_Value(value), m_MaxDepth(0) {}
  cow_BtreeNode(cow_BtreeNode const&) = default;
  cow_BtreeNode& operator=(cow_BtreeNode const&) = delete;

  K const& ConstGetKey() const { return m_Key; }
  V const& ConstGetValue() const { return m_Value; }
  // Only on a node made private by a writer's walk.
  V& GetValue() { return m_Value; }
  Link const& Left() const { return m_Left; }
  Link const& Right() const { return m_Right; }
  int MaxDepth() const { return m_MaxDepth; }

  void SetMaxDepth() {
    if (m_Left.IsNull() && m_Right.IsNull()) {
      m_MaxDepth = 0;
    } else {
      m_MaxDepth = 1 + std::max(DepthOf(m_Left), DepthOf(m_Right));
    }
  }

  // Adds key with value below the non-null link, unless the key is there.
  // Every node on the path is made private. After a child's subtree has
  // grown, the child is balanced and this node's height recomputed; the
  // caller does the same for this node.
  static bool InsertUnlessMember(Link& link, K const& key, V const& value) {
    cow_BtreeNode* node = link.Get();
    int const order = omi_Compare(key, node->m_Key);
    if (order == 0) return false;
    Link& child = order < 0 ? node->m_Left : node->m_Right;
    if (child.IsNull()) {
      child = new cow_BtreeNode(key, value);
    } else {
      if (!InsertUnlessMember(child, key, value)) return false;
      Balance(child);
    }
    node->SetMaxDepth();
    return true;
  }

  // Rotates the node behind the non-null link when one side is more than
  // one level higher: the child on the high side takes its place, and the
  // node takes that child's inner subtree. Nothing is copied unless a
  // rotation is due.
  static void Balance(Link& link) {
    cow_BtreeNode const* node = link.ConstGet();
    int const left = DepthOf(node->m_Left);
    int const right = DepthOf(node->m_Right);
    if (right - left > 1) {
      Rotate(link, &cow_BtreeNode::m_Right, &cow_BtreeNode::m_Left);
    } else if (right - left < -1) {
      Rotate(link, &cow_BtreeNode::m_Left, &cow_BtreeNode::m_Right);
    }
  }

  // The node holding key below link, made private with its path, or null;
  // nothing is copied when the key is absent.
  static cow_BtreeNode* Find(Link& link, K const& key) {
    if (ConstFind(link, key) == nullptr) return nullptr;
    Link* current = &link;
    for (;;) {
      cow_BtreeNode* node = current->Get();
      int const order = omi_Compare(key, node->m_Key);
      if (order == 0) return node;
      current = order < 0 ? &node->m_Left : &node->m_Right;
    }
  }

  static cow_BtreeNode const* ConstFind(Link const& link, K const& key) {
    cow_BtreeNode const* node = link.ConstGet();
    while (node != nullptr) {
      int const order = omi_Compare(key, node->m_Key);
      if (order == 0) return node;
      node = (order < 0 ? node->m_Left : node->m_Right).ConstGet();
    }
    return nullptr;
  }

  // Removes key below the link, which must hold it: the path is made
  // private, and on the way back each child on it is balanced and each
  // node's height recomputed.
  static void Remove(Link& link, K const& key) {
    cow_BtreeNode* node = link.Get();
    int const order = omi_Compare(key, node->m_Key);
    if (order == 0) {
      RemoveNode(link);
      return;
    }
    Link& child = order < 0 ? node->m_Left : node->m_Right;
    Remove(child, key);
    if (child.HasValue()) Balance(child);
    node->SetMaxDepth();
  }

  // Unlinks the private node behind link. With two children, the leftmost
  // node of the right subtree replaces it; with one, that child; with none,
  // null. The node goes with its links emptied, so its subtrees stay.
  static void RemoveNode(Link& link) {
    cow_BtreeNode* node = link.GetPtr();
    Link replacement;
    if (node->m_Left.HasValue() && node->m_Right.HasValue()) {
      replacement = TakeLeftmost(node->m_Right);
      cow_BtreeNode* successor = replacement.GetPtr();
      successor->m_Left = node->m_Left;
      successor->m_Right = node->m_Right;
      successor->SetMaxDepth();
    } else {
      replacement = node->m_Left.HasValue() ? node->m_Left : node->m_Right;
    }
    node->m_Left.DropReference();
    node->m_Right.DropReference();
    link = replacement;
  }

private:
  // A missing child counts as 0, the same as a leaf.
  static int DepthOf(Link const& link) { return link.IsNull() ? 0 : link.ConstGet()->m_MaxDepth; }

  // Single rotation of the node behind link towards the low side: up is
  // the member link of the high side, down that of the low side. The node
  // may still be shared when a removal has just moved it up.
  static void Rotate(Link& link, Link cow_BtreeNode::*up, Link cow_BtreeNode::*down) {
    cow_BtreeNode* node = link.Get();
    // The child is made private while node's link is its only holder here;
    // the local handle below raises its count.
    (node->*up).Get();
    Link pivot = node->*up;
    cow_BtreeNode* raised = pivot.GetPtr();
    node->*up = raised->*down;
    raised->*down = link;
    link = pivot;
    node->SetMaxDepth();
    raised->SetMaxDepth();
  }

  // Detaches the leftmost node below the non-null link, making the path to
  // it private, and returns the handle on it; its right subtree takes its
  // place, and every node above it on the path gets its height recomputed.
  static Link TakeLeftmost(Link& link) {
    cow_BtreeNode* node = link.Get();
    if (node->m_Left.HasValue()) {
      Link leftmost = TakeLeftmost(node->m_Left);
      node->SetMaxDepth();
      return leftmost;
    }
    Link leftmost = link;
    link = node->m_Right;
    node->m_Right.DropReference();
    return leftmost;
  }

  K m_Key;
  V m_Value;
  Link m_Left;
  Link m_Right;
  std::int32_t m_MaxDepth;
};

#endif
