#ifndef cow_BtreeIterator_h
#define cow_BtreeIterator_h

#include "cow_Btree.h"

#include <cstdlib>

// A cell of the stack of a cow_BtreeIterator: a node on the path from the
// root to the current node, and the cell of its parent.
template <class K, class V>
struct cow_BtreeNodeLink {
  cow_BtreeNode<K, V> const* m_Node;
  cow_BtreeNodeLink* m_Next;
};

// In-order iteration, both ways, over a snapshot of a cow_Btree. The
// iterator holds its own share of the root, so a writer on the tree copies
// the nodes it changes and the snapshot stays as it was.
//
// Invariant: the stack holds the path from the root to the current node,
// the current node on top; an empty stack means the walk is done. Cells
// popped are kept for reuse until the iterator goes.
template <class K, class V>
class cow_BtreeIterator {
public:
  using Node = cow_BtreeNode<K, V>;
  using Cell = cow_BtreeNodeLink<K, V>;

  // Positioned on the lowest key.
  explicit cow_BtreeIterator(cow_Btree<K, V> const& tree) : m_Root(tree.Root()), m_Top(nullptr), m_Free(nullptr) {
    First();
  }
  cow_BtreeIterator(cow_BtreeIterator const&) = delete;
  cow_BtreeIterator& operator=(cow_BtreeIterator const&) = delete;

  ~cow_BtreeIterator() {
    ClearStack();
    while (m_Free != nullptr) {
      Cell* cell = m_Free;
      m_Free = cell->m_Next;
      delete cell;
    }
  }

  void First() {
    ClearStack();
    PushSpine(m_Root.ConstGet(), &Node::Left);
  }

  void Last() {
    ClearStack();
    PushSpine(m_Root.ConstGet(), &Node::Right);
  }

  void Next() { Step(&Node::Right, &Node::Left); }
  void Previous() { Step(&Node::Left, &Node::Right); }

  bool IsDone() const { return m_Top == nullptr; }

  K const& CurrentKey() const { return Current()->ConstGetKey(); }
  V const& CurrentValue() const { return Current()->ConstGetValue(); }

  void Push(Node const* node) {
    Cell* cell = m_Free;
    if (cell != nullptr) {
      m_Free = cell->m_Next;
    } else {
      cell = new Cell;
    }
    cell->m_Node = node;
    cell->m_Next = m_Top;
    m_Top = cell;
  }

  // Takes the top node off the stack; null when the stack is empty.
  Node const* Pop() {
    Cell* cell = m_Top;
    if (cell == nullptr) return nullptr;
    m_Top = cell->m_Next;
    cell->m_Next = m_Free;
    m_Free = cell;
    return cell->m_Node;
  }

  void ClearStack() {
    while (m_Top != nullptr) Pop();
  }

private:
  using Side = typename Node::Link const& (Node::*)() const;

  // Pushes node and then each child on side down to the last one.
  void PushSpine(Node const* node, Side side) {
    for (; node != nullptr; node = (node->*side)().ConstGet()) Push(node);
  }

  // One step towards forward's side: into the forward subtree if there is
  // one, to its nearest end; else up past every node whose forward subtree
  // the walk came from.
  void Step(Side forward, Side backward) {
    if (IsDone()) return;
    Node const* below = (m_Top->m_Node->*forward)().ConstGet();
    if (below != nullptr) {
      PushSpine(below, backward);
      return;
    }
    Node const* child = Pop();
    while (!IsDone() && (m_Top->m_Node->*forward)().ConstGet() == child) child = Pop();
  }

  Node const* Current() const {
    if (IsDone()) std::abort();
    return m_Top->m_Node;
  }

  typename Node::Link m_Root;
  Cell* m_Top;
  Cell* m_Free;
};

#endif
