#ifndef omi_BtreeIterator_h
#define omi_BtreeIterator_h

#include "mem_Alloc.h"
#include "omi_Btree.h"

#include <cstdlib>

// One cell of an omi_BtreeIterator's stack: a node and the cell below it.
template <class K, class V>
struct omi_BtreeNodeLink : public mem_AllocationOperators {
  omi_BtreeNodeLink(omi_BtreeNode<K, V> const* node, omi_BtreeNodeLink* next) noexcept : m_Node(node), m_Next(next) {}

  omi_BtreeNode<K, V> const* m_Node;
  omi_BtreeNodeLink* m_Next;
};

// An in-order walk over an omi_Btree, in either direction, on a stack of the
// nodes from the root down to the current one.
//
// Invariant: the top cell is the current node and each cell below it holds
// the parent of the node above; the walk is done when the stack is empty.
// Popped cells are kept for reuse, so a walk allocates no more cells than the
// tree is deep. The constructor starts at First(); any change to the tree
// invalidates the walk, and First or Last starts it anew.
template <class K, class V>
class omi_BtreeIterator {
public:
  using Node = omi_BtreeNode<K, V>;
  using Link = omi_BtreeNodeLink<K, V>;

  explicit omi_BtreeIterator(omi_Btree<K, V> const& tree) : m_Tree(tree), m_Top(nullptr), m_Spare(nullptr) { First(); }

  omi_BtreeIterator(omi_BtreeIterator const&) = delete;
  omi_BtreeIterator& operator=(omi_BtreeIterator const&) = delete;

  ~omi_BtreeIterator() {
    ClearStack();
    while (m_Spare != nullptr) {
      Link* const next = m_Spare->m_Next;
      delete m_Spare;
      m_Spare = next;
    }
  }

  void First() {
    ClearStack();
    PushLeftSpine(m_Tree.Root());
  }

  void Last() {
    ClearStack();
    PushRightSpine(m_Tree.Root());
  }

  void Next() {
    if (IsDone()) return;
    if (Node const* const right = m_Top->m_Node->Right()) {
      PushLeftSpine(right);
      return;
    }
    Node const* child = Pop();
    while (!IsDone() && m_Top->m_Node->Right() == child) child = Pop();
  }

  void Previous() {
    if (IsDone()) return;
    if (Node const* const left = m_Top->m_Node->Left()) {
      PushRightSpine(left);
      return;
    }
    Node const* child = Pop();
    while (!IsDone() && m_Top->m_Node->Left() == child) child = Pop();
  }

  bool IsDone() const noexcept { return m_Top == nullptr; }

  K const& CurrentKey() const noexcept { return Current().ConstGetKey(); }
  V const& CurrentValue() const noexcept { return Current().ConstGetValue(); }

  void Push(Node const* node) {
    if (m_Spare != nullptr) {
      Link* const cell = m_Spare;
      m_Spare = cell->m_Next;
      cell->m_Node = node;
      cell->m_Next = m_Top;
      m_Top = cell;
    } else {
      m_Top = new Link(node, m_Top);
    }
  }

  // Takes the top cell off and returns its node; on an empty stack that is a
  // programming error.
  Node const* Pop() noexcept {
    if (m_Top == nullptr) std::abort();
    Link* const cell = m_Top;
    m_Top = cell->m_Next;
    cell->m_Next = m_Spare;
    m_Spare = cell;
    return cell->m_Node;
  }

  void ClearStack() noexcept {
    while (m_Top != nullptr) Pop();
  }

private:
  Node const& Current() const noexcept {
    if (m_Top == nullptr) std::abort();
    return *m_Top->m_Node;
  }

  void PushLeftSpine(Node const* node) {
    for (; node != nullptr; node = node->Left()) Push(node);
  }

  void PushRightSpine(Node const* node) {
    for (; node != nullptr; node = node->Right()) Push(node);
  }

  omi_Btree<K, V> const& m_Tree;
  Link* m_Top;
  Link* m_Spare;
};

#endif
