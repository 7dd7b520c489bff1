#ifndef omi_Btree_h
#define omi_Btree_h

#include "mem_Alloc.h"
#include "omi_Compare.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>
#include <utility>

// One node of an omi_Btree: a value, its key, two owned children and the
// height of the subtree below it.
//
// Invariants:
// - Keys in the left subtree compare lower than m_Key (omi_Compare), keys in
//   the right subtree higher.
// - m_MaxDepth is 0 for a leaf, else 1 plus the greater m_MaxDepth of the
//   children that exist.
//
// Insert and Remove recurse along one path, so their stack depth is the
// tree's height. Every node on a changed path is rebalanced by a single
// rotation, which keeps the height logarithmic: under 2 log2(n) + 2 for
// ascending, descending, zigzag and random keys alike (about 25 levels for a
// million keys). Copying and destroying a subtree use no recursion at all.
template <class K, class V>
class omi_BtreeNode : public mem_AllocationOperators {
public:
  omi_BtreeNode(K const& key, V const& value) : m_Value(value), m_Key(key), m_Left(nullptr), m_Right(nullptr), m_MaxDepth(0) {}

  // Copies the whole subtree of other.
  omi_BtreeNode(omi_BtreeNode const& other) : omi_BtreeNode(other.m_Key, other.m_Value) {
    m_MaxDepth = other.m_MaxDepth;
    try {
      CopyChildren(other);
    } catch (...) {
      DeleteSubtree(m_Left);
      DeleteSubtree(m_Right);
      throw;
    }
  }

  omi_BtreeNode& operator=(omi_BtreeNode const&) = delete;

  ~omi_BtreeNode() {
    DeleteSubtree(m_Left);
    DeleteSubtree(m_Right);
  }

  K const& ConstGetKey() const noexcept { return m_Key; }
  V const& ConstGetValue() const noexcept { return m_Value; }
  V& GetValue() noexcept { return m_Value; }
  omi_BtreeNode const* Left() const noexcept { return m_Left; }
  omi_BtreeNode const* Right() const noexcept { return m_Right; }
  int MaxDepth() const noexcept { return m_MaxDepth; }

  void SetMaxDepth() noexcept {
    std::int32_t depth = 0;
    if (m_Left != nullptr) depth = m_Left->m_MaxDepth + 1;
    if (m_Right != nullptr) depth = std::max(depth, m_Right->m_MaxDepth + 1);
    m_MaxDepth = depth;
  }

  // Rotates once if the children's depths differ by more than 1, a missing
  // child counting as 0 like a leaf; returns the new root of this subtree, or
  // null if nothing moved.
  omi_BtreeNode* Balance() noexcept {
    std::int32_t const left = m_Left != nullptr ? m_Left->m_MaxDepth : 0;
    std::int32_t const right = m_Right != nullptr ? m_Right->m_MaxDepth : 0;
    if (right - left > 1) {
      omi_BtreeNode* const root = m_Right;
      m_Right = root->m_Left;
      root->m_Left = this;
      SetMaxDepth();
      root->SetMaxDepth();
      return root;
    }
    if (right - left < -1) {
      omi_BtreeNode* const root = m_Left;
      m_Left = root->m_Right;
      root->m_Right = this;
      SetMaxDepth();
      root->SetMaxDepth();
      return root;
    }
    return nullptr;
  }

  // Adds key below this node unless it is present; true if added. The path
  // below is rebalanced; this node itself is left for the caller to balance.
  bool Insert(K const& key, V const& value) {
    int const order = omi_Compare(key, m_Key);
    if (order == 0) return false;
    omi_BtreeNode*& link = order < 0 ? m_Left : m_Right;
    if (link == nullptr) {
      link = new omi_BtreeNode(key, value);
    } else {
      if (!link->Insert(key, value)) return false;
      if (omi_BtreeNode* const root = link->Balance()) link = root;
    }
    SetMaxDepth();
    return true;
  }

  omi_BtreeNode* Find(K const& key) noexcept { return const_cast<omi_BtreeNode*>(ConstFind(key)); }

  omi_BtreeNode const* ConstFind(K const& key) const noexcept {
    omi_BtreeNode const* node = this;
    while (node != nullptr) {
      int const order = omi_Compare(key, node->m_Key);
      if (order == 0) return node;
      node = order < 0 ? node->m_Left : node->m_Right;
    }
    return nullptr;
  }

  // Removes key from the subtree behind link, rebalancing on the way back and
  // storing the subtree's new root in link; false if key is absent.
  static bool Remove(omi_BtreeNode*& link, K const& key) {
    omi_BtreeNode* const node = link;
    if (node == nullptr) return false;
    int const order = omi_Compare(key, node->m_Key);
    if (order < 0) {
      if (!Remove(node->m_Left, key)) return false;
    } else if (order > 0) {
      if (!Remove(node->m_Right, key)) return false;
    } else {
      RemoveNode(link);
      if (link == nullptr) return true;
    }
    Rebalance(link);
    return true;
  }

  // Destroys the node behind link and puts in its place its only child, or,
  // with two children, the leftmost node of its right subtree.
  static void RemoveNode(omi_BtreeNode*& link) noexcept {
    omi_BtreeNode* const node = link;
    omi_BtreeNode* replacement;
    if (node->m_Left != nullptr && node->m_Right != nullptr) {
      replacement = DetachLeftmost(node->m_Right);
      replacement->m_Left = node->m_Left;
      replacement->m_Right = node->m_Right;
      replacement->SetMaxDepth();
    } else {
      replacement = node->m_Left != nullptr ? node->m_Left : node->m_Right;
    }
    node->m_Left = nullptr;
    node->m_Right = nullptr;
    link = replacement;
    delete node;
  }

  // Destroys the subtree under node without recursion: left children are
  // rotated up until the node at hand has none, then it is detached from its
  // right subtree and deleted.
  static void DeleteSubtree(omi_BtreeNode* node) noexcept {
    while (node != nullptr) {
      if (omi_BtreeNode* const left = node->m_Left) {
        node->m_Left = left->m_Right;
        left->m_Right = node;
        node = left;
      } else {
        omi_BtreeNode* const right = node->m_Right;
        node->m_Right = nullptr;
        delete node;
        node = right;
      }
    }
  }

private:
  // Recomputes the depth of the node behind link and balances it.
  static void Rebalance(omi_BtreeNode*& link) noexcept {
    link->SetMaxDepth();
    if (omi_BtreeNode* const root = link->Balance()) link = root;
  }

  // Unlinks the leftmost node of the subtree behind link, moving its right
  // subtree into its place, and returns it with no children. Every node on
  // the way is given its new depth and balanced, so the depths stay exact.
  static omi_BtreeNode* DetachLeftmost(omi_BtreeNode*& link) noexcept {
    omi_BtreeNode* const node = link;
    if (node->m_Left == nullptr) {
      link = node->m_Right;
      node->m_Right = nullptr;
      return node;
    }
    omi_BtreeNode* const leftmost = DetachLeftmost(node->m_Left);
    Rebalance(link);
    return leftmost;
  }

  // Gives this node, already holding a copy of other's key and value, copies
  // of other's subtrees, walking them with an explicit stack of the nodes
  // still to copy. The stack holds at most one pending right subtree per
  // level, so it never outgrows other's depth plus one.
  void CopyChildren(omi_BtreeNode const& other) {
    struct Pending {
      omi_BtreeNode const* source;
      omi_BtreeNode** link;
    };
    std::size_t const capacity = static_cast<std::size_t>(other.m_MaxDepth) + 2;
    auto const stack = static_cast<Pending*>(mem_Malloc(sizeof(Pending) * capacity));
    std::size_t size = 0;
    auto const push = [&](omi_BtreeNode const* source, omi_BtreeNode** link) {
      if (source == nullptr) return;
      if (size == capacity) std::abort();
      stack[size++] = Pending{source, link};
    };
    try {
      push(other.m_Right, &m_Right);
      push(other.m_Left, &m_Left);
      while (size > 0) {
        Pending const pending = stack[--size];
        omi_BtreeNode* const copy = new omi_BtreeNode(pending.source->m_Key, pending.source->m_Value);
        copy->m_MaxDepth = pending.source->m_MaxDepth;
        *pending.link = copy;
        push(pending.source->m_Right, &copy->m_Right);
        push(pending.source->m_Left, &copy->m_Left);
      }
    } catch (...) {
      mem_Free(stack);
      throw;
    }
    mem_Free(stack);
  }

  V m_Value;
  K m_Key;
  omi_BtreeNode* m_Left;
  omi_BtreeNode* m_Right;
  std::int32_t m_MaxDepth;
};

// An ordered map from K to V: a height-balanced binary search tree of
// omi_BtreeNode, one key per node, ordered by omi_Compare. Insert keeps the
// value of a key already present. Get of a missing key gives the stored null
// value, default-constructed until SetNullValue replaces it.
// Invariants: m_Size counts the nodes under m_Root; the tree owns them.
template <class K, class V>
class omi_Btree {
public:
  using Node = omi_BtreeNode<K, V>;

  omi_Btree() : m_Root(nullptr), m_Size(0), m_NullValue() {}

  omi_Btree(omi_Btree const& other)
      : m_Root(other.m_Root != nullptr ? new Node(*other.m_Root) : nullptr), m_Size(other.m_Size),
        m_NullValue(other.m_NullValue) {}

  omi_Btree(omi_Btree&& other) noexcept(std::is_nothrow_move_constructible<V>::value)
      : m_Root(other.m_Root), m_Size(other.m_Size), m_NullValue(std::move(other.m_NullValue)) {
    other.m_Root = nullptr;
    other.m_Size = 0;
  }

  omi_Btree& operator=(omi_Btree const& other) {
    if (&other != this) {
      omi_Btree copy(other);
      Swap(copy);
    }
    return *this;
  }

  ~omi_Btree() { delete m_Root; }

  // A deep copy: its own nodes, the same size and null value.
  omi_Btree Copy() const { return omi_Btree(*this); }

  void Swap(omi_Btree& other) noexcept {
    using std::swap;
    swap(m_Root, other.m_Root);
    swap(m_Size, other.m_Size);
    swap(m_NullValue, other.m_NullValue);
  }

  // Adds key with value; false, keeping the present value, if key is present.
  bool Insert(K const& key, V const& value) {
    if (m_Root == nullptr) {
      m_Root = new Node(key, value);
    } else {
      if (!m_Root->Insert(key, value)) return false;
      if (Node* const root = m_Root->Balance()) m_Root = root;
    }
    ++m_Size;
    return true;
  }

  bool Remove(K const& key) {
    if (!Node::Remove(m_Root, key)) return false;
    --m_Size;
    return true;
  }

  // The value of key, or the stored null value if key is absent.
  V& Get(K const& key) {
    Node* const node = m_Root != nullptr ? m_Root->Find(key) : nullptr;
    return node != nullptr ? node->GetValue() : m_NullValue;
  }
  V const& ConstGet(K const& key) const {
    Node const* const node = m_Root != nullptr ? m_Root->ConstFind(key) : nullptr;
    return node != nullptr ? node->ConstGetValue() : m_NullValue;
  }

  bool IsMember(K const& key) const { return m_Root != nullptr && m_Root->ConstFind(key) != nullptr; }

  void Clear() noexcept {
    delete m_Root;
    m_Root = nullptr;
    m_Size = 0;
  }

  bool IsEmpty() const noexcept { return m_Size == 0; }
  int Size() const noexcept { return m_Size; }
  // The height of the tree: 0 for an empty tree and for a single node.
  int Depth() const noexcept { return m_Root != nullptr ? m_Root->MaxDepth() : 0; }

  void SetNullValue(V const& value) { m_NullValue = value; }
  V const& GetNullValue() const noexcept { return m_NullValue; }

  Node const* Root() const noexcept { return m_Root; }

private:
  Node* m_Root;
  std::int32_t m_Size;
  V m_NullValue;
};

#endif
