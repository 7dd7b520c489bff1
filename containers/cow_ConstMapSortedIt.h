#ifndef cow_ConstMapSortedIt_h
#define cow_ConstMapSortedIt_h

#include "cow_ConstMapIterator.h"
#include "omi_Compare.h"

#include <algorithm>

// Read-only iteration over a snapshot of a cow_Map in key order: ascending,
// descending, or that of a caller's comparison function. Each First()
// collects the snapshot and sorts it again.
//
// A comparison function receives two pointers, each to a
// `cow_MapNode<K, V> const*` (an element of the array being sorted), and
// answers negative, zero or positive; it must order consistently.
// AscSortCmp and DescSortCmp order by omi_Compare of the keys.
// Direction: 0 ascending, 1 descending, 2 the caller's function.
template <class K, class V>
class cow_ConstMapSortedIt : private cow_ConstMapIterator<K, V> {
  using Base = cow_ConstMapIterator<K, V>;

public:
  using Node = cow_MapNode<K, V>;
  using CompareFunction = int (*)(void const*, void const*);

  // Ascending, positioned on the first entry.
  explicit cow_ConstMapSortedIt(cow_Map<K, V> const& map)
      : Base(map, 0), m_Direction(0), m_Compare(&AscSortCmp) {
    First();
  }

  // Descending for direction 1, ascending for any other value.
  cow_ConstMapSortedIt(cow_Map<K, V> const& map, int direction)
      : Base(map, 0), m_Direction(direction), m_Compare(direction == 1 ? &DescSortCmp : &AscSortCmp) {
    First();
  }

  cow_ConstMapSortedIt(cow_Map<K, V> const& map, CompareFunction compare)
      : Base(map, 0), m_Direction(2), m_Compare(compare) {
    First();
  }

  void First() {
    this->Nodes();
    // The array ends with its null mark, which stays last.
    CompareFunction const compare = m_Compare;
    std::stable_sort(this->m_Nodes.begin(), this->m_Nodes.end() - 1,
                     [compare](Node const* left, Node const* right) { return compare(&left, &right) < 0; });
    this->m_Index = 0;
  }

  using Base::CurrentKey;
  using Base::CurrentValue;
  using Base::IsDone;
  using Base::Next;

  int Direction() const { return m_Direction; }

  static int AscSortCmp(void const* left, void const* right) {
    return omi_Compare(NodeAt(left)->m_Key, NodeAt(right)->m_Key);
  }
  static int DescSortCmp(void const* left, void const* right) { return AscSortCmp(right, left); }

private:
  static Node const* NodeAt(void const* element) { return *static_cast<Node const* const*>(element); }

  int m_Direction;
  CompareFunction m_Compare;
};

#endif
