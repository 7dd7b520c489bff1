#ifndef omi_UintTableNode_h
#define omi_UintTableNode_h

#include "mem_Alloc.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>

// One entry of a table, as a sorted walk collects it: the key's 32 bits and
// the address of its value in the table. In a walk over an omi_IntTable the
// bits are those of the signed key (two's complement).
//
// A comparison function for sorted walks has the form of a qsort comparison
// over the array of node pointers: each argument points at an
// omi_UintTableNode<V> const*. FromSortArgument undoes that.
template <class V>
class omi_UintTableNode {
public:
  omi_UintTableNode(unsigned int key, V const* value) noexcept : m_Key(key), m_Value(value) {}

  unsigned int Key() const noexcept { return m_Key; }
  V const& Value() const noexcept { return *m_Value; }

  static omi_UintTableNode const& FromSortArgument(void const* argument) noexcept {
    return **static_cast<omi_UintTableNode const* const*>(argument);
  }

private:
  unsigned int m_Key;
  V const* m_Value;
};

// The entries of a table in the order of a comparison function, for the
// sorted walks of the table iterators. Invariant: m_Order[0, m_Count) points
// at the m_Count nodes of m_Nodes, each once.
template <class V>
class omi_UintTableNodeArray {
public:
  using Node = omi_UintTableNode<V>;
  using Compare = int (*)(void const*, void const*);

  omi_UintTableNodeArray() noexcept : m_Nodes(nullptr), m_Order(nullptr), m_Count(0), m_Capacity(0) {}
  omi_UintTableNodeArray(omi_UintTableNodeArray const&) = delete;
  omi_UintTableNodeArray& operator=(omi_UintTableNodeArray const&) = delete;
  ~omi_UintTableNodeArray() { Release(); }

  // Empties the array and makes room for capacity entries.
  void Reset(unsigned int capacity) {
    if (capacity > m_Capacity) {
      Release();
      m_Nodes = static_cast<Node*>(mem_Malloc(sizeof(Node) * capacity));
      m_Order = static_cast<Node const**>(mem_Malloc(sizeof(Node const*) * capacity));
      m_Capacity = capacity;
    }
    m_Count = 0;
  }

  // Appends an entry; more than the capacity given to Reset is a programming error.
  void Add(unsigned int key, V const* value) noexcept {
    if (m_Count == m_Capacity) std::abort();
    m_Order[m_Count] = ::new (static_cast<void*>(m_Nodes + m_Count)) Node(key, value);
    ++m_Count;
  }

  // Orders the entries by compare, which must be a consistent order. The
  // sort is stable: entries that compare equal keep the order of Add.
  void Sort(Compare compare) {
    std::stable_sort(m_Order, m_Order + m_Count,
                     [compare](Node const* left, Node const* right) { return compare(&left, &right) < 0; });
  }

  unsigned int Count() const noexcept { return m_Count; }
  Node const& At(unsigned int index) const noexcept { return *m_Order[index]; }

private:
  static_assert(std::is_trivially_destructible<Node>::value, "nodes are freed without destruction");

  void Release() noexcept {
    mem_Free(m_Nodes);
    mem_Free(m_Order);
    m_Nodes = nullptr;
    m_Order = nullptr;
    m_Capacity = 0;
    m_Count = 0;
  }

  Node* m_Nodes;
  Node const** m_Order;
  unsigned int m_Count;
  unsigned int m_Capacity;
};

#endif
