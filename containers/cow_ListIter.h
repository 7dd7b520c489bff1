#ifndef cow_ListIter_h
#define cow_ListIter_h

#include "cow_List.h"

#include <cstdlib>

// Forward iteration over a snapshot of a cow_List. The iterator holds its own
// share of the list's table, so any later writer on the list copies the table
// (and the blocks it changes) first: no writer invalidates an iterator, and
// the iterator goes on over the contents the list had when it was made.
// Invariant: while NotDone(), m_Items is the storage of the block holding
// position m_Position and m_Place is that position's place in it.
template <class T>
class cow_ListIter {
public:
  explicit cow_ListIter(cow_List<T> const& list)
      : m_Snapshot(list), m_Items(nullptr), m_End(list.m_FirstOffset + list.m_Length),
        m_BlockSize(1 << list.m_BlockShift), m_Position(0), m_Place(0) {
    First();
  }

  // Restarts on the same snapshot.
  void First() {
    m_Position = m_Snapshot.m_FirstOffset;
    m_Place = m_Position & (m_BlockSize - 1);
    LoadBlock();
  }

  void Next() {
    if (IsDone()) return;
    ++m_Position;
    if (++m_Place == m_BlockSize) {
      m_Place = 0;
      LoadBlock();
    }
  }

  bool IsDone() const { return m_Position >= m_End; }
  bool NotDone() const { return m_Position < m_End; }

  T const& CurrentItem() const {
    if (IsDone()) std::abort();
    return m_Items[m_Place];
  }

  // The current element's index in the list.
  int ArrayIndex() const { return m_Position - m_Snapshot.m_FirstOffset; }

private:
  void LoadBlock() {
    m_Items = NotDone() ? m_Snapshot.m_Table[m_Position >> m_Snapshot.m_BlockShift]->Items() : nullptr;
  }

  cow_List<T> m_Snapshot;
  T const* m_Items;
  int m_End;
  int m_BlockSize;
  int m_Position;
  int m_Place;
};

#endif
