#ifndef omi_BlockedArray_h
#define omi_BlockedArray_h

#include "mem_Alloc.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

// A sparse array of V addressed by a 32-bit index: a table of pointers to
// blocks of 2^shift cells. Cell i lives in block i >> shift at place
// i & (2^shift - 1). A block comes into being, all its cells constructed, the
// first time SetCell touches it, and goes with the array (or Clear); the
// table grows in multiples of the quantum and never shrinks, so an index
// range that is never set costs a null slot and no cells.
//
// Invariants:
// - m_Table is null exactly when m_TableSize is 0.
// - Every non-null slot holds m_CellsPerBlock constructed cells, made by
//   BlockInitialize or BlockCopy and destroyed as V by this class.
// - m_CellMask == m_CellsPerBlock - 1 == 2^m_BlockShift - 1.
//
// A subclass may give new or copied blocks other contents by overriding
// BlockInitialize and BlockCopy; it must construct every cell of the block.
// The copy constructor, like any constructor, calls this class's BlockCopy.
template <class V>
class omi_BlockedArray : public mem_AllocationOperators {
  static_assert(alignof(V) <= alignof(std::max_align_t), "mem_Malloc storage is not aligned for V");

public:
  static constexpr unsigned int kDefaultQuantum = 128;

  // A quantum of 0 leaves the table empty and grows it in quanta of 128; any
  // other quantum starts with that many null slots. A shift above 31 is a
  // programming error.
  omi_BlockedArray(unsigned int quantum, unsigned int shift)
      : m_TableQuantum(quantum == 0 ? kDefaultQuantum : quantum), m_TableSize(0), m_CellsPerBlock(0),
        m_BlockShift(shift), m_CellMask(0), m_Table(nullptr) {
    if (shift > 31) std::abort();
    m_CellsPerBlock = 1u << shift;
    m_CellMask = m_CellsPerBlock - 1;
    if (quantum != 0) {
      m_Table = AllocateTable(quantum);
      m_TableSize = quantum;
    }
  }

  omi_BlockedArray(omi_BlockedArray const& other)
      : m_TableQuantum(other.m_TableQuantum), m_TableSize(0), m_CellsPerBlock(other.m_CellsPerBlock),
        m_BlockShift(other.m_BlockShift), m_CellMask(other.m_CellMask), m_Table(nullptr) {
    m_Table = CopyTable(other);
    m_TableSize = other.m_TableSize;
  }

  // Copies other's geometry and blocks through BlockCopy. If a copy fails the
  // array is left empty.
  omi_BlockedArray& operator=(omi_BlockedArray const& other) {
    if (&other == this) return *this;
    Clear();
    m_TableQuantum = other.m_TableQuantum;
    m_CellsPerBlock = other.m_CellsPerBlock;
    m_BlockShift = other.m_BlockShift;
    m_CellMask = other.m_CellMask;
    m_Table = CopyTable(other);
    m_TableSize = other.m_TableSize;
    return *this;
  }

  virtual ~omi_BlockedArray() { Clear(); }

  // The cell at index, or null if its block does not exist.
  V* GetCell(unsigned int index) noexcept {
    std::uint32_t const block = index >> m_BlockShift;
    if (block >= m_TableSize || m_Table[block] == nullptr) return nullptr;
    return m_Table[block] + (index & m_CellMask);
  }
  V const* GetCell(unsigned int index) const noexcept { return const_cast<omi_BlockedArray*>(this)->GetCell(index); }

  // Stores value at index, growing the table to the next multiple of the
  // quantum past the block and making the block as needed. A table that
  // would need 2^32 slots or more cannot exist: that is a programming error.
  void SetCell(unsigned int index, V const& value) {
    std::uint32_t const block = index >> m_BlockShift;
    if (block >= m_TableSize) {
      std::uint64_t const size = (std::uint64_t(block) / m_TableQuantum + 1) * m_TableQuantum;
      if (size > UINT32_MAX) std::abort();
      Realloc(static_cast<unsigned int>(size));
    }
    if (m_Table[block] == nullptr) {
      V* storage = AllocateBlockStorage();
      try {
        BlockInitialize(&storage);
      } catch (...) {
        mem_Free(storage);
        throw;
      }
      m_Table[block] = storage;
    }
    m_Table[block][index & m_CellMask] = value;
  }

  // Grows the table to size slots; a smaller size leaves it as it is.
  void Realloc(unsigned int size) {
    if (size <= m_TableSize) return;
    V** const table = AllocateTable(size);
    std::copy_n(m_Table, m_TableSize, table);
    mem_Free(m_Table);
    m_Table = table;
    m_TableSize = size;
  }

  // Destroys every block and releases the table; the geometry stays.
  void Clear() noexcept {
    for (std::uint32_t block = 0; block < m_TableSize; ++block) DestroyBlock(m_Table[block]);
    mem_Free(m_Table);
    m_Table = nullptr;
    m_TableSize = 0;
  }

  // Debugging aid: prints each existing block's index range and the bytes of
  // its cells on standard output, "|" after each cell, a line feed after
  // every eighth.
  void DumpArray() const {
    for (std::uint32_t block = 0; block < m_TableSize; ++block) {
      if (m_Table[block] == nullptr) continue;
      std::uint32_t const first = block << m_BlockShift;
      std::printf("Block indices= %u - %u\n", first, first + m_CellMask);
      auto const bytes = reinterpret_cast<unsigned char const*>(m_Table[block]);
      for (std::uint32_t cell = 0; cell < m_CellsPerBlock; ++cell) {
        for (std::size_t byte = 0; byte < sizeof(V); ++byte) std::printf("%02x", bytes[cell * sizeof(V) + byte]);
        std::printf("|");
        if ((cell + 1) % 8 == 0) std::printf("\n");
      }
    }
  }

  unsigned int CellsPerBlock() const noexcept { return m_CellsPerBlock; }

protected:
  // *block is raw storage for CellsPerBlock() cells: construct each one. The
  // default value-initialises them (0 for numbers, null for pointers). If a
  // construction throws, the cells built so far must be destroyed again.
  virtual void BlockInitialize(V** block) {
    V* const cells = *block;
    std::uint32_t built = 0;
    try {
      for (; built < m_CellsPerBlock; ++built) ::new (static_cast<void*>(cells + built)) V();
    } catch (...) {
      DestroyCells(cells, built);
      throw;
    }
  }

  // *destination is raw storage for CellsPerBlock() cells: construct each as
  // a copy of the cell at the same place in *source. The same duty on a
  // throwing construction holds as in BlockInitialize.
  virtual void BlockCopy(V** destination, V* const* source) {
    V* const cells = *destination;
    std::uint32_t built = 0;
    try {
      for (; built < m_CellsPerBlock; ++built) ::new (static_cast<void*>(cells + built)) V((*source)[built]);
    } catch (...) {
      DestroyCells(cells, built);
      throw;
    }
  }

private:
  static V** AllocateTable(std::uint32_t size) {
    auto table = static_cast<V**>(mem_Malloc(sizeof(V*) * size));
    std::fill_n(table, size, nullptr);
    return table;
  }

  V* AllocateBlockStorage() const { return static_cast<V*>(mem_Malloc(sizeof(V) * std::size_t(m_CellsPerBlock))); }

  static void DestroyCells(V* cells, std::uint32_t count) noexcept {
    while (count > 0) cells[--count].~V();
  }

  void DestroyBlock(V* cells) const noexcept {
    if (cells == nullptr) return;
    DestroyCells(cells, m_CellsPerBlock);
    mem_Free(cells);
  }

  // A table of other's size holding copies of its blocks; this array must
  // already have other's cell count. On failure nothing is left allocated.
  V** CopyTable(omi_BlockedArray const& other) {
    if (other.m_TableSize == 0) return nullptr;
    V** const table = AllocateTable(other.m_TableSize);
    std::uint32_t block = 0;
    try {
      for (; block < other.m_TableSize; ++block) {
        if (other.m_Table[block] == nullptr) continue;
        V* storage = AllocateBlockStorage();
        try {
          BlockCopy(&storage, &other.m_Table[block]);
        } catch (...) {
          mem_Free(storage);
          throw;
        }
        table[block] = storage;
      }
    } catch (...) {
      for (std::uint32_t built = 0; built < block; ++built) DestroyBlock(table[built]);
      mem_Free(table);
      throw;
    }
    return table;
  }

  std::uint32_t m_TableQuantum;
  std::uint32_t m_TableSize;
  std::uint32_t m_CellsPerBlock;
  std::uint32_t m_BlockShift;
  std::uint32_t m_CellMask;
  V** m_Table;
};

#endif
