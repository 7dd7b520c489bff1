#ifndef omi_UintTable_h
#define omi_UintTable_h

#include "mem_Alloc.h"
#include "omi_UintTableBlock.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

// A map from 32-bit unsigned keys to values of V in a two-level array. A key's
// high part (key >> top shift) indexes the top array of blocks; its low part
// (key & low-key mask) is a cell of that block and a bit of the block's
// presence vector. A lookup is an array read, a bit test and a cell read;
// nothing on it allocates. Keys that grow from small values, as handles and
// row numbers do, all land in the first block.
//
// Invariants:
// - A block exists exactly while at least one of its bits is set.
// - m_Count is the sum of the blocks' bit counts.
// - m_LowMask == 2^m_TopShift - 1, and 1 <= 32 - m_TopShift <= 31, so both
//   shifts are defined and the top length fits in 32 bits.
// - Each top slot below m_TopLength is null or owns its block.
//
// V must be default constructible and copyable: a block constructs all its
// cells up front. A removed key's cell is reset to V(), so the table holds on
// to no resource of a value it no longer has.
template <class V>
class omi_UintTable : public mem_AllocationOperators {
public:
  using Block = omi_UintTableBlock<V>;

  omi_UintTable() { Setup(20, 2, 24, 10); }

  // The larger start for a table that will hold many keys; the argument
  // itself does not matter.
  explicit omi_UintTable(unsigned long) { Setup(20, 128, 1024, 10); }

  // The larger start, then the count pairs keys[i], values[i] inserted in order.
  omi_UintTable(unsigned long count, unsigned int const* keys, V const* values) : omi_UintTable(count) {
    for (unsigned long index = 0; index < count; ++index) Insert(keys[index], values[index]);
  }

  omi_UintTable(unsigned int highBits, unsigned int blockIndexBits, unsigned int quantum) : omi_UintTable() {
    Initialize(highBits, blockIndexBits, quantum);
  }

  omi_UintTable(omi_UintTable const& other)
      : m_Top(nullptr), m_Count(0), m_TopLength(0), m_LowMask(other.m_LowMask), m_TopShift(other.m_TopShift),
        m_BlockQuantum(other.m_BlockQuantum), m_BlockShift(other.m_BlockShift) {
    m_Top = AllocateTop(other.m_TopLength);
    m_TopLength = other.m_TopLength;
    try {
      for (std::uint32_t slot = 0; slot < m_TopLength; ++slot) {
        if (other.m_Top[slot] != nullptr) m_Top[slot] = new Block(*other.m_Top[slot]);
      }
    } catch (...) {
      Release();
      throw;
    }
    m_Count = other.m_Count;
  }

  omi_UintTable& operator=(omi_UintTable const& other) {
    if (&other != this) {
      omi_UintTable copy(other);
      Swap(copy);
    }
    return *this;
  }

  ~omi_UintTable() { Release(); }

  omi_UintTable Copy() const { return omi_UintTable(*this); }

  void Swap(omi_UintTable& other) noexcept {
    std::swap(m_Top, other.m_Top);
    std::swap(m_Count, other.m_Count);
    std::swap(m_TopLength, other.m_TopLength);
    std::swap(m_LowMask, other.m_LowMask);
    std::swap(m_TopShift, other.m_TopShift);
    std::swap(m_BlockQuantum, other.m_BlockQuantum);
    std::swap(m_BlockShift, other.m_BlockShift);
  }

  // Empties the table and sets its geometry: the top highBits bits of a key
  // index the top array, the next blockIndexBits pick a block of the block's
  // own table (grown in quanta of quantum slots), and the remaining bits a
  // cell in that block. highBits outside [1, 31] or highBits + blockIndexBits
  // above 32 is a programming error.
  void Initialize(unsigned int highBits, unsigned int blockIndexBits, unsigned int quantum) {
    if (highBits < 1 || highBits > 31 || blockIndexBits > 32 - highBits) std::abort();
    Release();
    Setup(32 - highBits, 2, quantum, 32 - highBits - blockIndexBits);
  }

  // Stores value under key. True if the key was new; false if it was present,
  // in which case its value has been replaced.
  bool Insert(unsigned int key, V const& value) {
    std::uint32_t const high = key >> m_TopShift;
    std::uint32_t const low = key & m_LowMask;
    if (high >= m_TopLength) GrowTop(high);
    Block*& block = m_Top[high];
    bool const newBlock = block == nullptr;
    if (newBlock) block = new Block(m_BlockQuantum, m_BlockShift);
    bool added;
    try {
      block->SetCell(low, value);
      added = block->Bits().SetBit(low);
    } catch (...) {
      if (newBlock) {
        delete block;
        block = nullptr;
      }
      throw;
    }
    if (added) ++m_Count;
    return added;
  }

  // Removes key; false if it was absent. The block goes with its last key.
  bool Remove(unsigned int key) {
    Block* const block = FindTableBlock(key);
    std::uint32_t const low = key & m_LowMask;
    if (block == nullptr || !block->Bits().UnsetBit(low)) return false;
    --m_Count;
    if (block->Bits().IsEmpty()) {
      delete block;
      m_Top[key >> m_TopShift] = nullptr;
    } else {
      *block->GetCell(low) = V();
    }
    return true;
  }

  // The cell of key, which the caller knows to be present: the bit is not
  // tested. A key whose cell does not exist at all is a programming error.
  V& Get(unsigned int key) {
    Block* const block = FindTableBlock(key);
    V* const cell = block == nullptr ? nullptr : block->GetCell(key & m_LowMask);
    if (cell == nullptr) std::abort();
    return *cell;
  }
  V const& ConstGet(unsigned int key) const { return const_cast<omi_UintTable*>(this)->Get(key); }

  // Copies key's value into value; false, leaving value alone, if key is absent.
  bool ConstGetValue(unsigned int key, V& value) const {
    Block const* const block = FindTableBlock(key);
    std::uint32_t const low = key & m_LowMask;
    if (block == nullptr || !block->Bits().TestBit(low)) return false;
    value = *block->GetCell(low);
    return true;
  }

  bool IsMember(unsigned int key) const noexcept {
    Block const* const block = FindTableBlock(key);
    return block != nullptr && block->Bits().TestBit(key & m_LowMask);
  }

  // Removes every key; the top array keeps its length.
  void Clear() noexcept {
    for (std::uint32_t slot = 0; slot < m_TopLength; ++slot) {
      delete m_Top[slot];
      m_Top[slot] = nullptr;
    }
    m_Count = 0;
  }

  bool IsEmpty() const noexcept { return m_Count == 0; }
  int Size() const noexcept { return static_cast<int>(m_Count); }
  unsigned int KeyModulus() const noexcept { return m_LowMask; }

  // The block that holds key's high part, or null.
  Block* FindTableBlock(unsigned int key) const noexcept {
    std::uint32_t const high = key >> m_TopShift;
    return high < m_TopLength ? m_Top[high] : nullptr;
  }

  // The top array as the iterators walk it: slot i holds the keys
  // (i << TopShift()) | low.
  unsigned int TopLength() const noexcept { return m_TopLength; }
  unsigned int TopShift() const noexcept { return m_TopShift; }
  Block const* TopBlock(unsigned int slot) const noexcept { return m_Top[slot]; }

private:
  void Setup(unsigned int topShift, unsigned int topLength, unsigned int quantum, unsigned int blockShift) {
    m_Top = nullptr;
    m_Count = 0;
    m_TopLength = 0;
    m_LowMask = (1u << topShift) - 1;
    m_TopShift = topShift;
    m_BlockQuantum = quantum;
    m_BlockShift = blockShift;
    m_Top = AllocateTop(topLength);
    m_TopLength = topLength;
  }

  static Block** AllocateTop(std::uint32_t length) {
    auto top = static_cast<Block**>(mem_Malloc(sizeof(Block*) * length));
    std::fill_n(top, length, nullptr);
    return top;
  }

  // Grows the top array to (high & ~63) + 64 slots.
  void GrowTop(std::uint32_t high) {
    std::uint32_t const length = (high & ~63u) + 64;
    Block** const top = AllocateTop(length);
    std::copy_n(m_Top, m_TopLength, top);
    mem_Free(m_Top);
    m_Top = top;
    m_TopLength = length;
  }

  void Release() noexcept {
    Clear();
    mem_Free(m_Top);
    m_Top = nullptr;
    m_TopLength = 0;
  }

  Block** m_Top;
  std::uint32_t m_Count;
  std::uint32_t m_TopLength;
  std::uint32_t m_LowMask;
  std::uint32_t m_TopShift;
  std::uint32_t m_BlockQuantum;
  std::uint32_t m_BlockShift;
};

#endif
