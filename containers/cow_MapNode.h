#ifndef cow_MapNode_h
#define cow_MapNode_h

#include "cow_COW.h"

// One entry of a cow_Map and the two subtrees below it: left for key bit 0
// at the next depth, right for bit 1. Every node holds a live entry. The
// children are copy-on-write handles, so copying a node (which is what
// unsharing it does) copies the entry and shares both subtrees.
//
// The digital tree can grow long chains (string keys that agree in the
// bits the walk reads), so a node releases its subtrees without recursion.
template <class K, class V>
struct cow_MapNode {
  using Link = cow_COW<cow_MapNode, cow_Direct<cow_MapNode> >;

  cow_MapNode(K const& key, V const& value) : m_Key(key), m_Value(value) {}
  cow_MapNode(cow_MapNode const&) = default;
  cow_MapNode& operator=(cow_MapNode const&) = delete;

  ~cow_MapNode() {
    ReleaseSubtree(m_Left);
    ReleaseSubtree(m_Right);
  }

  K m_Key;
  V m_Value;
  Link m_Left;
  Link m_Right;

private:
  // Drops the subtree under top, deleting the nodes that only it holds.
  // An exclusive node with an exclusive left child is rotated right (the
  // child takes its place, the node becomes the child's right subtree); an
  // exclusive node without one loses its left share, hands its right
  // subtree up and is deleted with both links empty, so no node's deletion
  // reaches a further node. A shared node only loses one count.
  static void ReleaseSubtree(Link& top) noexcept {
    while (top.HasValue()) {
      if (!top.Exclusive()) {
        top.DropReference();
        return;
      }
      cow_MapNode* node = top.GetPtr();
      if (node->m_Left.HasValue() && node->m_Left.Exclusive()) {
        Link left = node->m_Left;
        node->m_Left = left.GetPtr()->m_Right;
        left.GetPtr()->m_Right = top;
        top = left;
      } else {
        node->m_Left.DropReference();
        Link right = node->m_Right;
        node->m_Right.DropReference();
        top = right;
      }
    }
    top.DropReference();
  }
};

#endif
