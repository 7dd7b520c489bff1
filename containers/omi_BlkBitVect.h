#ifndef omi_BlkBitVect_h
#define omi_BlkBitVect_h

#include "mem_Alloc.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// A sparse set of 32-bit bit numbers: a table of pointers to chunks of 512
// bits (eight 64-bit words, one cache line), where a chunk exists only while
// it holds a set bit. A vector whose bits lie in a few narrow ranges costs
// only those chunks and the table up to the highest of them.
//
// Invariants:
// - m_Count is exactly the number of set bits, kept up to date by SetBit and
//   UnsetBit, so Count() needs no recount and has no dirty state.
// - Every non-null chunk holds at least one set bit: UnsetBit frees a chunk
//   as it empties. A traversal therefore finds a bit in every chunk it enters.
// - Slots at or past m_ChunkSlots are absent, slots below it null or owned.
class omi_BlkBitVect {
public:
  static constexpr unsigned int kChunkShift = 9;
  static constexpr unsigned int kWordsPerChunk = (1u << kChunkShift) / 64;

  omi_BlkBitVect() noexcept : m_Chunks(nullptr), m_ChunkSlots(0), m_Count(0) {}

  omi_BlkBitVect(omi_BlkBitVect const& other) : omi_BlkBitVect() {
    if (other.m_ChunkSlots == 0) return;
    m_Chunks = AllocateTable(other.m_ChunkSlots);
    m_ChunkSlots = other.m_ChunkSlots;
    for (unsigned int slot = 0; slot < m_ChunkSlots; ++slot) {
      if (other.m_Chunks[slot] == nullptr) continue;
      m_Chunks[slot] = AllocateChunk();
      std::memcpy(m_Chunks[slot], other.m_Chunks[slot], sizeof(std::uint64_t) * kWordsPerChunk);
    }
    m_Count = other.m_Count;
  }

  omi_BlkBitVect& operator=(omi_BlkBitVect const& other) {
    if (&other != this) {
      omi_BlkBitVect copy(other);
      Swap(copy);
    }
    return *this;
  }

  ~omi_BlkBitVect() { Clear(); }

  void Swap(omi_BlkBitVect& other) noexcept {
    std::swap(m_Chunks, other.m_Chunks);
    std::swap(m_ChunkSlots, other.m_ChunkSlots);
    std::swap(m_Count, other.m_Count);
  }

  // Sets bit; true if it was clear.
  bool SetBit(unsigned int bit) {
    unsigned int const slot = bit >> kChunkShift;
    if (slot >= m_ChunkSlots) GrowTable(slot);
    if (m_Chunks[slot] == nullptr) m_Chunks[slot] = AllocateChunk();
    std::uint64_t& word = m_Chunks[slot][WordIndex(bit)];
    std::uint64_t const mask = WordMask(bit);
    if (word & mask) return false;
    word |= mask;
    ++m_Count;
    return true;
  }

  // Clears bit; true if it was set. Frees its chunk when that empties.
  bool UnsetBit(unsigned int bit) noexcept {
    unsigned int const slot = bit >> kChunkShift;
    if (slot >= m_ChunkSlots || m_Chunks[slot] == nullptr) return false;
    std::uint64_t* const chunk = m_Chunks[slot];
    std::uint64_t const mask = WordMask(bit);
    if (!(chunk[WordIndex(bit)] & mask)) return false;
    chunk[WordIndex(bit)] &= ~mask;
    --m_Count;
    if (std::all_of(chunk, chunk + kWordsPerChunk, [](std::uint64_t w) { return w == 0; })) {
      mem_Free(chunk);
      m_Chunks[slot] = nullptr;
    }
    return true;
  }

  bool TestBit(unsigned int bit) const noexcept {
    unsigned int const slot = bit >> kChunkShift;
    if (slot >= m_ChunkSlots || m_Chunks[slot] == nullptr) return false;
    return (m_Chunks[slot][WordIndex(bit)] & WordMask(bit)) != 0;
  }

  unsigned int Count() const noexcept { return m_Count; }
  bool IsEmpty() const noexcept { return m_Count == 0; }

  // Clears every bit and releases all storage.
  void Clear() noexcept {
    for (unsigned int slot = 0; slot < m_ChunkSlots; ++slot) mem_Free(m_Chunks[slot]);
    mem_Free(m_Chunks);
    m_Chunks = nullptr;
    m_ChunkSlots = 0;
    m_Count = 0;
  }

  // The lowest set bit at or above from, into found; false if there is none.
  bool FindUp(unsigned int from, unsigned int& found) const noexcept {
    unsigned int slot = from >> kChunkShift;
    if (slot >= m_ChunkSlots) return false;
    if (std::uint64_t const* chunk = m_Chunks[slot]) {
      std::uint64_t mask = ~std::uint64_t(0) << (from & 63);
      for (unsigned int w = WordIndex(from); w < kWordsPerChunk; ++w, mask = ~std::uint64_t(0)) {
        if (std::uint64_t const bits = chunk[w] & mask) {
          found = BitNumber(slot, w, static_cast<unsigned int>(__builtin_ctzll(bits)));
          return true;
        }
      }
    }
    while (++slot < m_ChunkSlots) {
      if (std::uint64_t const* chunk = m_Chunks[slot]) {
        for (unsigned int w = 0;; ++w) {
          if (chunk[w] != 0) {
            found = BitNumber(slot, w, static_cast<unsigned int>(__builtin_ctzll(chunk[w])));
            return true;
          }
        }
      }
    }
    return false;
  }

  // The highest set bit at or below from, into found; false if there is none.
  bool FindDown(unsigned int from, unsigned int& found) const noexcept {
    if (m_ChunkSlots == 0) return false;
    unsigned int slot = from >> kChunkShift;
    if (slot >= m_ChunkSlots) {
      slot = m_ChunkSlots - 1;
      from = (slot << kChunkShift) | ((1u << kChunkShift) - 1);
    }
    if (std::uint64_t const* chunk = m_Chunks[slot]) {
      std::uint64_t mask = ~std::uint64_t(0) >> (63 - (from & 63));
      for (unsigned int w = WordIndex(from) + 1; w-- > 0; mask = ~std::uint64_t(0)) {
        if (std::uint64_t const bits = chunk[w] & mask) {
          found = BitNumber(slot, w, 63 - static_cast<unsigned int>(__builtin_clzll(bits)));
          return true;
        }
      }
    }
    while (slot-- > 0) {
      if (std::uint64_t const* chunk = m_Chunks[slot]) {
        for (unsigned int w = kWordsPerChunk - 1;; --w) {
          if (chunk[w] != 0) {
            found = BitNumber(slot, w, 63 - static_cast<unsigned int>(__builtin_clzll(chunk[w])));
            return true;
          }
        }
      }
    }
    return false;
  }

private:
  static constexpr unsigned int kMaxChunkSlots = 1u << (32 - kChunkShift);

  static unsigned int WordIndex(unsigned int bit) { return (bit >> 6) & (kWordsPerChunk - 1); }
  static std::uint64_t WordMask(unsigned int bit) { return std::uint64_t(1) << (bit & 63); }
  static unsigned int BitNumber(unsigned int slot, unsigned int word, unsigned int bit) {
    return (slot << kChunkShift) | (word << 6) | bit;
  }

  static std::uint64_t** AllocateTable(unsigned int slots) {
    auto table = static_cast<std::uint64_t**>(mem_Malloc(sizeof(std::uint64_t*) * slots));
    std::fill_n(table, slots, nullptr);
    return table;
  }

  static std::uint64_t* AllocateChunk() {
    auto chunk = static_cast<std::uint64_t*>(mem_Malloc(sizeof(std::uint64_t) * kWordsPerChunk));
    std::fill_n(chunk, kWordsPerChunk, std::uint64_t(0));
    return chunk;
  }

  // Makes slot valid, at least doubling the table so that a rising run of
  // bits costs amortised constant time.
  void GrowTable(unsigned int slot) {
    unsigned int const slots = std::min(kMaxChunkSlots, std::max({slot + 1, m_ChunkSlots * 2, 4u}));
    std::uint64_t** const table = AllocateTable(slots);
    std::copy_n(m_Chunks, m_ChunkSlots, table);
    mem_Free(m_Chunks);
    m_Chunks = table;
    m_ChunkSlots = slots;
  }

  std::uint64_t** m_Chunks;
  unsigned int m_ChunkSlots;
  unsigned int m_Count;
};

// A cursor over the set bits of an omi_BlkBitVect, in either direction. Each
// move is a word scan from the current bit, so a walk over all set bits costs
// one pass over the chunks. Invariant: unless IsDone(), Current() is a set bit
// of the vector, provided the vector has not changed since the last move.
class omi_BlkBitVectTrav {
public:
  omi_BlkBitVectTrav() noexcept : m_Bits(nullptr), m_Current(0), m_Done(true) {}
  explicit omi_BlkBitVectTrav(omi_BlkBitVect const& bits) noexcept : m_Bits(&bits), m_Current(0), m_Done(true) {}

  // Each move returns !IsDone().
  bool First() noexcept { return Settle(m_Bits != nullptr && m_Bits->FindUp(0, m_Current)); }
  bool Last() noexcept { return Settle(m_Bits != nullptr && m_Bits->FindDown(~0u, m_Current)); }
  bool Next() noexcept {
    if (m_Done) return false;
    return Settle(m_Current != ~0u && m_Bits->FindUp(m_Current + 1, m_Current));
  }
  bool Previous() noexcept {
    if (m_Done) return false;
    return Settle(m_Current != 0 && m_Bits->FindDown(m_Current - 1, m_Current));
  }

  bool IsDone() const noexcept { return m_Done; }
  unsigned int Current() const noexcept { return m_Current; }

private:
  bool Settle(bool found) noexcept {
    m_Done = !found;
    return found;
  }

  omi_BlkBitVect const* m_Bits;
  unsigned int m_Current;
  bool m_Done;
};

#endif
