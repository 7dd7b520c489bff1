#ifndef cow_List_h
#define cow_List_h

#include "cow_ListBlock.h"
#include "mem_Alloc.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

// Selects the constructor that sizes an empty list for a number of elements.
struct cow_ListConstruct {};
// Selects the constructor that sizes a list and fills it with copies of one value.
struct cow_ListFill {};

template <class T>
class cow_ListIter;

// The sequence type of the library: a deque made of blocks of 2^shift
// elements, reached through a table of block pointers, with copy-on-write at
// two levels. Copies of a list share the table (counted by the share count);
// a writer first gives its list a private table, which shares every block
// (each block counts the tables holding it); then it copies only the blocks
// it changes. Element i lives at position p = first offset + i, in slot
// p >> shift, place p & (2^shift - 1).
//
// Invariants:
// - The live elements are exactly the positions [first offset, first offset +
//   length); every slot holding one of them is non-null. Other slots are null
//   or hold a block whose live part is the list's (possibly empty) overlap.
// - A block shared by several tables has the same live places in all of them:
//   every writer makes a block private before it changes which places live.
// - A list with a table has a share count; the default list has neither.
// - The table size is a multiple of 16 slots, except in a list sized by a
//   capacity hint, until a writer at the back or a shrink sizes the table
//   anew (prepending only moves the blocks within it).
// - Emptying with Resize(0), Clear or any shrinking writer except RemoveFirst
//   resets first offset to 0 and block shift to 4 and leaves no table.
// A programming error (an index out of range, removal from an empty list,
// more than 2^31 - 1 positions) calls abort(). Allocation failures throw from
// the allocators; a throwing element copy leaves the list valid.
template <class T>
class cow_List {
  using Block = cow_ListBlock<T>;

public:
  cow_List() noexcept
      : m_Length(0), m_TableSize(0), m_BlockShift(kDefaultShift), m_FirstOffset(0), m_ShareCount(nullptr),
        m_Table(nullptr) {}

  // Shares the table of other; nothing is copied.
  cow_List(cow_List const& other) noexcept
      : m_Length(other.m_Length), m_TableSize(other.m_TableSize), m_BlockShift(other.m_BlockShift),
        m_FirstOffset(other.m_FirstOffset), m_ShareCount(other.m_ShareCount), m_Table(other.m_Table) {
    if (m_ShareCount) ++*m_ShareCount;
  }

  // Takes the header of other, which is left empty.
  cow_List(cow_List&& other) noexcept
      : m_Length(other.m_Length), m_TableSize(other.m_TableSize), m_BlockShift(other.m_BlockShift),
        m_FirstOffset(other.m_FirstOffset), m_ShareCount(other.m_ShareCount), m_Table(other.m_Table) {
    other.Forget();
  }

  // Empty, with a table and block shift chosen to hold capacity elements.
  cow_List(cow_ListConstruct, int capacity) : cow_List() { AllocateForCapacity(capacity); }

  // count copies of value, in a list sized for count.
  cow_List(cow_ListFill, int count, T const& value) : cow_List(cow_ListConstruct(), count) { Fill(count, value); }

  // Copies of items[0, count), in a list sized for capacity (0: for count).
  cow_List(T const* items, int count, int capacity = 0)
      : cow_List(cow_ListConstruct(), capacity == 0 ? count : capacity) {
    SetFromArray(items, count);
  }

  explicit cow_List(T const& a) : cow_List() { Append(a); }
  cow_List(T const& a, T const& b) : cow_List(a) { Append(b); }
  cow_List(T const& a, T const& b, T const& c) : cow_List(a, b) { Append(c); }
  cow_List(T const& a, T const& b, T const& c, T const& d) : cow_List(a, b, c) { Append(d); }
  cow_List(T const& a, T const& b, T const& c, T const& d, T const& e) : cow_List(a, b, c, d) { Append(e); }

  ~cow_List() { Release(); }

  cow_List& operator=(cow_List const& other) noexcept {
    if (&other == this) return *this;
    // Raised before this list lets go, in case the two share a table.
    if (other.m_ShareCount) ++*other.m_ShareCount;
    Release();
    CopyHeader(other);
    return *this;
  }

  cow_List& operator=(cow_List&& other) noexcept {
    if (&other == this) return *this;
    Release();
    CopyHeader(other);
    other.Forget();
    return *this;
  }

  // Reading. None of these copies anything.
  int Length() const { return m_Length; }
  bool IsEmpty() const { return m_Length == 0; }
  T const& First() const { return ConstGet(0); }
  T const& Last() const { return ConstGet(m_Length - 1); }
  T const& ConstGet(int index) const {
    CheckIndex(index);
    return UncheckedConstGet(index);
  }
  T const& operator[](int index) const { return ConstGet(index); }
  T const& UncheckedConstGet(int index) const {
    int const position = m_FirstOffset + index;
    return m_Table[position >> m_BlockShift]->ConstGet(position & PlaceMask());
  }

  // A new mem_Malloc'd array of copies of the elements, its length stored in
  // count. The caller owns it: destroy each of the count elements (for a T
  // that is not trivially destructible), then release it with mem_Free.
  T* GetCArray(int& count) const {
    T* array = static_cast<T*>(mem_Malloc(sizeof(T) * static_cast<std::size_t>(m_Length)));
    int built = 0;
    try {
      while (built < m_Length) {
        int const position = m_FirstOffset + built;
        int const place = position & PlaceMask();
        int const run = std::min(BlockSize() - place, m_Length - built);
        Block::CopyConstruct(array + built, m_Table[position >> m_BlockShift]->Items() + place, run);
        built += run;
      }
    } catch (...) {
      Block::DestroyItems(array, built);
      mem_Free(array);
      throw;
    }
    count = m_Length;
    return array;
  }

  // Copies of the elements [start, end), the bounds clamped into the list; it
  // never fails. The result shares no block with this list.
  cow_List Slice(int start, int end) const {
    if (start < 0) start = 0;
    if (end < start) end = start;
    if (end > m_Length) end = m_Length;
    if (start > end) start = end;
    cow_List result(cow_ListConstruct(), end - start);
    result.AppendCopies(*this, start, end - start);
    return result;
  }

  // Writing. Each writer gives the list a private table first and copies
  // only the blocks it changes.

  T& Get(int index) {
    CheckIndex(index);
    CopyArray();
    Isolate(index);
    return UncheckedGet(index);
  }

  // Writable access without the index check and without unsharing: only for
  // a place that this list has already made private (through Get or another
  // writer) and not shared since; otherwise the write shows in the copies.
  T& UncheckedGet(int index) {
    int const position = m_FirstOffset + index;
    return m_Table[position >> m_BlockShift]->Get(position & PlaceMask());
  }

  void Put(int index, T const& value) { Get(index) = value; }

  void Append(T const& value) {
    ExtendTo(static_cast<std::int64_t>(m_Length) + 1,
             [&value](T* place, int) { ::new (static_cast<void*>(place)) T(value); });
  }

  void Prepend(T const& value) {
    Prefix();
    int const position = m_FirstOffset - 1;
    try {
      MakeSlotPrivate(position >> m_BlockShift);
      ::new (static_cast<void*>(PlaceAt(position))) T(value);
    } catch (...) {
      ReleaseEmptyBlocks();
      throw;
    }
    --m_FirstOffset;
    ++m_Length;
  }

  // Inserts value before element index (index == Length() appends), moving
  // the shorter side of the list by one place. value must not be an element
  // of this list.
  void InsertIndex(int index, T const& value) {
    if (index == m_Length) {
      Append(value);
      return;
    }
    if (index == 0) {
      Prepend(value);
      return;
    }
    CheckIndex(index);
    if (index < m_Length - index) {
      Prefix();
      int const front = m_FirstOffset - 1;
      try {
        IsolateRange(-1, index - 1);
        ::new (static_cast<void*>(PlaceAt(front))) T(std::move(UncheckedGet(0)));
      } catch (...) {
        ReleaseEmptyBlocks();
        throw;
      }
      --m_FirstOffset;
      ++m_Length;
      for (int k = 1; k < index; ++k) UncheckedGet(k) = std::move(UncheckedGet(k + 1));
    } else {
      CopyArray();
      int const end = EndPosition();
      ResizeTable(static_cast<std::int64_t>(end) + 1);
      try {
        IsolateRange(index, m_Length);
        ::new (static_cast<void*>(PlaceAt(end))) T(std::move(UncheckedGet(m_Length - 1)));
      } catch (...) {
        ReleaseEmptyBlocks();
        throw;
      }
      ++m_Length;
      for (int k = m_Length - 2; k > index; --k) UncheckedGet(k) = std::move(UncheckedGet(k - 1));
    }
    UncheckedGet(index) = value;
  }

  // Removes element index, moving the shorter side of the list by one place.
  void RemoveIndex(int index) {
    CheckIndex(index);
    if (m_Length == 1) {
      Resize(0);
      return;
    }
    CopyArray();
    if (index < m_Length - index) {
      IsolateRange(0, index);
      for (int k = index; k > 0; --k) UncheckedGet(k) = std::move(UncheckedGet(k - 1));
      DropFirst();
    } else {
      IsolateRange(index, m_Length - 1);
      for (int k = index; k < m_Length - 1; ++k) UncheckedGet(k) = std::move(UncheckedGet(k + 1));
      ShrinkTo(m_Length - 1);
    }
  }

  // Removes element 0. Unlike the other shrinking writers it never resets
  // the first offset: a queue emptied from the front goes on from there.
  void RemoveFirst() {
    if (m_Length == 0) RaiseOutOfRange(0);
    CopyArray();
    Isolate(0);
    DropFirst();
  }

  void RemoveLast() { RemoveIndex(m_Length - 1); }

  // Removes the last element and returns a copy of it.
  T Pop() {
    CheckIndex(m_Length - 1);
    T last(UncheckedConstGet(m_Length - 1));
    RemoveIndex(m_Length - 1);
    return last;
  }

  void Clear() { Resize(0); }

  // Cuts the list to length, or extends it with value-initialised elements.
  void Resize(int length) {
    if (length < 0) RaiseOutOfRange(length);
    CopyArray();
    if (length == 0) {
      MakeEmpty();
    } else if (length < m_Length) {
      ShrinkTo(length);
    } else {
      ExtendTo(length, [](T* place, int) { ::new (static_cast<void*>(place)) T(); });
    }
  }

  // Extends the list to length with copies of value; a list already that
  // long is left alone.
  void Fill(int length, T const& value) {
    if (length <= m_Length) return;
    ExtendTo(length, [&value](T* place, int) { ::new (static_cast<void*>(place)) T(value); });
  }

  // Appends copies of the elements of other, which may be this list.
  void Concatenate(cow_List const& other) { AppendCopies(other, 0, other.m_Length); }

  // Makes the list a private copy of items[0, count).
  void SetFromArray(T const* items, int count) {
    if (count < 0) RaiseOutOfRange(count);
    CopyArray();
    if (count == 0) {
      MakeEmpty();
      return;
    }
    if (count < m_Length) ShrinkTo(count);
    int const kept = m_Length;
    IsolateRange(0, kept - 1);
    for (int k = 0; k < kept; ++k) UncheckedGet(k) = items[k];
    ExtendTo(count, [items, kept](T* place, int k) { ::new (static_cast<void*>(place)) T(items[kept + k]); });
  }

private:
  friend class cow_ListIter<T>;

  static constexpr int kDefaultShift = 4;
  // The table grows and shrinks 2^4 = 16 slots at a time.
  static constexpr int kTableQuantumShift = 4;
  static constexpr std::int64_t kMaxPosition = std::numeric_limits<std::int32_t>::max();

  // The live places [first, end) of one block.
  struct Places {
    int first;
    int end;
  };

  int BlockSize() const { return 1 << m_BlockShift; }
  int PlaceMask() const { return BlockSize() - 1; }
  int EndPosition() const { return m_FirstOffset + m_Length; }
  T* PlaceAt(int position) { return m_Table[position >> m_BlockShift]->Items() + (position & PlaceMask()); }

  Places LivePlaces(int slot) const {
    std::int64_t const start = static_cast<std::int64_t>(slot) << m_BlockShift;
    std::int64_t const from = std::max<std::int64_t>(m_FirstOffset, start);
    std::int64_t const to = std::min<std::int64_t>(EndPosition(), start + BlockSize());
    if (to <= from) return Places{0, 0};
    return Places{static_cast<int>(from - start), static_cast<int>(to - start)};
  }

  void CheckIndex(int index) const {
    if (index < 0 || index >= m_Length) RaiseOutOfRange(index);
  }

  [[noreturn]] void RaiseOutOfRange(int) const { std::abort(); }

  static std::int32_t* NewCount() {
    auto* count = static_cast<std::int32_t*>(mem_OperatorNewTinyThrow(sizeof(std::int32_t)));
    *count = 1;
    return count;
  }

  void CopyHeader(cow_List const& other) {
    m_Length = other.m_Length;
    m_TableSize = other.m_TableSize;
    m_BlockShift = other.m_BlockShift;
    m_FirstOffset = other.m_FirstOffset;
    m_ShareCount = other.m_ShareCount;
    m_Table = other.m_Table;
  }

  // Back to the default state without releasing anything.
  void Forget() {
    m_Length = 0;
    m_TableSize = 0;
    m_BlockShift = kDefaultShift;
    m_FirstOffset = 0;
    m_ShareCount = nullptr;
    m_Table = nullptr;
  }

  // Gives up this list's share of the table; the last share releases every
  // block, the table and the count. The list is left in the default state.
  void Release() noexcept {
    if (m_ShareCount && --*m_ShareCount == 0) {
      Destroy(0);
      mem_Free(m_Table);
      mem_Free(m_ShareCount);
    }
    Forget();
  }

  // The table for a capacity hint: for a hint n, e is the exponent of n as a
  // float, less 3 (so 2^(e+3) <= n, with the rounding of the conversion). A
  // larger e than the default shift becomes the block shift, and the table
  // gets the 8 to 16 blocks of that size that hold n, plus 16 slots.
  void AllocateForCapacity(int capacity) {
    if (capacity < 0) RaiseOutOfRange(capacity);
    if (capacity == 0) return;
    float const asFloat = static_cast<float>(capacity);
    std::uint32_t bits;
    std::memcpy(&bits, &asFloat, sizeof bits);
    int const exponent = static_cast<int>((bits >> 23) & 0xffu) - 130;
    int shift = m_BlockShift;
    int blocks = 0;
    if (exponent > shift) {
      shift = exponent;
      std::uint32_t const mantissa = (bits & 0x7fffffu) | 0x800000u;
      blocks = static_cast<int>((mantissa + 0xfffffu) >> 20);
    }
    int const slots = blocks + 16;
    std::int32_t* count = NewCount();
    try {
      m_Table = static_cast<Block**>(mem_Malloc(sizeof(Block*) * static_cast<std::size_t>(slots)));
    } catch (...) {
      mem_Free(count);
      throw;
    }
    std::fill(m_Table, m_Table + slots, nullptr);
    m_ShareCount = count;
    m_TableSize = slots;
    m_BlockShift = shift;
  }

  // Gives the list a table of its own. The blocks stay shared: each gains a
  // reference from the new table. A list without a table just gets a count.
  void CopyArray() {
    if (m_ShareCount == nullptr) {
      m_ShareCount = NewCount();
      return;
    }
    if (*m_ShareCount == 1) return;
    std::int32_t* count = NewCount();
    Block** table = nullptr;
    if (m_TableSize != 0) {
      try {
        table = static_cast<Block**>(mem_Malloc(sizeof(Block*) * static_cast<std::size_t>(m_TableSize)));
      } catch (...) {
        mem_Free(count);
        throw;
      }
      std::copy(m_Table, m_Table + m_TableSize, table);
      for (int slot = 0; slot < m_TableSize; ++slot)
        if (table[slot]) table[slot]->AddReference();
    }
    --*m_ShareCount;
    m_ShareCount = count;
    m_Table = table;
  }

  // A new block of count 1 whose places [first, first + count) are copies of
  // source[0, count).
  Block* InitializeBlock(T const* source, int first, int count) {
    Block* block = new Block(m_BlockShift);
    try {
      Block::CopyConstruct(block->Items() + first, source, count);
    } catch (...) {
      delete block;
      throw;
    }
    return block;
  }

  // Makes the block in slot private to this list's table: a null slot gets
  // a new block, a shared block is replaced by a copy of its live places.
  void MakeSlotPrivate(int slot) {
    Block*& block = m_Table[slot];
    if (block == nullptr) {
      block = new Block(m_BlockShift);
    } else if (block->IsShared()) {
      Places const live = LivePlaces(slot);
      Block* copy = InitializeBlock(block->Items() + live.first, live.first, live.end - live.first);
      block->DropSharedReference();
      block = copy;
    }
  }

  void Isolate(int index) { MakeSlotPrivate((m_FirstOffset + index) >> m_BlockShift); }

  // Makes private the blocks of the places from index first to index last,
  // both included; they may lie outside the live range.
  void IsolateRange(int first, int last) {
    if (first > last) return;
    int const lastSlot = (m_FirstOffset + last) >> m_BlockShift;
    for (int slot = (m_FirstOffset + first) >> m_BlockShift; slot <= lastSlot; ++slot) MakeSlotPrivate(slot);
  }

  // Releases the blocks from firstSlot to the end of the table, destroying
  // the live places of each block whose last reference goes.
  void Destroy(int firstSlot) noexcept {
    for (int slot = firstSlot; slot < m_TableSize; ++slot) {
      Block* block = m_Table[slot];
      if (block == nullptr) continue;
      Places const live = LivePlaces(slot);
      Block::Release(block, live.first, live.end);
      m_Table[slot] = nullptr;
    }
  }

  // Undoes the blocks that a growth cut short by a throwing copy left
  // behind without a live element.
  void ReleaseEmptyBlocks() noexcept {
    for (int slot = 0; slot < m_TableSize; ++slot) {
      Block* block = m_Table[slot];
      if (block == nullptr) continue;
      Places const live = LivePlaces(slot);
      if (live.first != live.end) continue;
      Block::Release(block, 0, 0);
      m_Table[slot] = nullptr;
    }
  }

  // Sets the table size to what needed positions take, rounded up to the
  // quantum of 16 blocks, so that growth never moves an element. The table
  // must be private and hold no block at or past the new size.
  void ResizeTable(std::int64_t needed) {
    if (needed > kMaxPosition) RaiseOutOfRange(m_Length);
    std::int64_t const quantum = std::int64_t{1} << (m_BlockShift + kTableQuantumShift);
    int const slots = static_cast<int>(((needed + quantum - 1) / quantum) << kTableQuantumShift);
    if (slots == m_TableSize) return;
    if (slots == 0) {
      mem_Free(m_Table);
      m_Table = nullptr;
    } else {
      m_Table = static_cast<Block**>(mem_Realloc(m_Table, sizeof(Block*) * static_cast<std::size_t>(slots)));
      if (slots > m_TableSize) std::fill(m_Table + m_TableSize, m_Table + slots, nullptr);
    }
    m_TableSize = slots;
  }

  // Makes room in front: when the first offset is 0, moves the block
  // pointers to the top of the table (which gains 16 slots if it is full),
  // so that all free slots lie before the list and prepending moves nothing.
  void Prefix() {
    CopyArray();
    if (m_FirstOffset != 0) return;
    int const blocks = static_cast<int>((static_cast<std::int64_t>(m_Length) + BlockSize() - 1) >> m_BlockShift);
    if (blocks == m_TableSize) ResizeTable((static_cast<std::int64_t>(blocks) << m_BlockShift) + 1);
    int const free = m_TableSize - blocks;
    std::int64_t const offset = static_cast<std::int64_t>(free) << m_BlockShift;
    if (offset + m_Length > kMaxPosition) RaiseOutOfRange(m_Length);
    for (int slot = blocks - 1; slot >= 0; --slot) m_Table[slot + free] = m_Table[slot];
    std::fill(m_Table, m_Table + std::min(free, blocks), nullptr);
    m_FirstOffset = static_cast<int>(offset);
  }

  // The tail of RemoveFirst once the first block is private: destroys
  // element 0 and releases its block if no live place is left in it.
  void DropFirst() {
    Block::DestroyItems(PlaceAt(m_FirstOffset), 1);
    ++m_FirstOffset;
    --m_Length;
    if ((m_FirstOffset & PlaceMask()) == 0) {
      int const slot = (m_FirstOffset >> m_BlockShift) - 1;
      Block::Release(m_Table[slot], 0, 0);
      m_Table[slot] = nullptr;
    }
  }

  // Empties the list: releases every block, resets first offset and block
  // shift, and takes the table down to the size 0 gives. The table must be
  // private.
  void MakeEmpty() {
    Destroy(0);
    m_Length = 0;
    m_FirstOffset = 0;
    m_BlockShift = kDefaultShift;
    ResizeTable(0);
  }

  // Cuts a private-tabled list to 0 < length < Length(): releases the
  // blocks past the new end and ends the lifetime of the elements past it in
  // the last block that stays (a shared last block is replaced by a copy of
  // what stays; the copy is made first, so a throwing copy changes nothing).
  void ShrinkTo(int length) {
    int const needed = m_FirstOffset + length;
    int const lastSlot = (needed - 1) >> m_BlockShift;
    int const keptEnd = needed - (lastSlot << m_BlockShift);
    Places const live = LivePlaces(lastSlot);
    Block* const last = m_Table[lastSlot];
    Block* replacement = nullptr;
    if (live.end > keptEnd && last->IsShared())
      replacement = InitializeBlock(last->Items() + live.first, live.first, keptEnd - live.first);
    Destroy(lastSlot + 1);
    if (replacement) {
      last->DropSharedReference();
      m_Table[lastSlot] = replacement;
    } else if (live.end > keptEnd) {
      Block::DestroyItems(last->Items() + keptEnd, live.end - keptEnd);
    }
    m_Length = length;
    ResizeTable(needed);
  }

  // Grows the list to length, building each new element with
  // build(place, k), k counted from the old end. The length rises with each
  // element built, so a throwing build leaves a valid, shorter list.
  template <class Build>
  void ExtendTo(std::int64_t length, Build build) {
    CopyArray();
    int const end = EndPosition();
    ResizeTable(m_FirstOffset + length);
    try {
      IsolateRange(m_Length, static_cast<int>(length) - 1);
      for (int k = 0; m_Length < length; ++k) {
        build(PlaceAt(end + k), k);
        ++m_Length;
      }
    } catch (...) {
      ReleaseEmptyBlocks();
      throw;
    }
  }

  // Appends copies of count elements of source from start; source may be
  // this list, whose elements below the old length stay where they are.
  void AppendCopies(cow_List const& source, int start, int count) {
    if (count == 0) return;
    ExtendTo(static_cast<std::int64_t>(m_Length) + count, [&source, start](T* place, int k) {
      ::new (static_cast<void*>(place)) T(source.UncheckedConstGet(start + k));
    });
  }

  std::int32_t m_Length;
  std::int32_t m_TableSize;
  std::int32_t m_BlockShift;
  std::int32_t m_FirstOffset;
  std::int32_t* m_ShareCount;
  Block** m_Table;
};

#endif
