#ifndef cow_ListBlock_h
#define cow_ListBlock_h

#include "mem_Alloc.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

// One block of a cow_List: raw storage for 2^shift elements and a count of
// the block tables that hold it. The block does not know which of its places
// are live; the list that owns it does (its first offset and length), and all
// tables that share a block agree on that range, because every writer makes a
// block private before it changes which places are live.
//
// Elements are built by copy construction in the raw storage and destroyed
// one at a time. For trivially copyable T a run of copies is one memcpy and
// destruction does nothing.
template <class T>
class cow_ListBlock : public mem_AllocationOperators {
  static_assert(alignof(T) <= alignof(std::max_align_t), "mem_Malloc storage is not aligned for T");

public:
  // A block with a count of 1 and no live element. If the storage cannot be
  // allocated the new-expression frees the block before the exception leaves.
  explicit cow_ListBlock(int shift)
      : m_References(1), m_Storage(mem_Malloc(sizeof(T) << shift)) {}

  // Frees the storage only: live elements must have been destroyed.
  ~cow_ListBlock() { mem_Free(m_Storage); }

  cow_ListBlock(cow_ListBlock const&) = delete;
  cow_ListBlock& operator=(cow_ListBlock const&) = delete;

  T* Items() { return static_cast<T*>(m_Storage); }
  T const* Items() const { return static_cast<T const*>(m_Storage); }
  T& Get(int place) { return Items()[place]; }
  T const& ConstGet(int place) const { return Items()[place]; }

  bool IsShared() const { return m_References > 1; }
  void AddReference() { ++m_References; }

  // Gives up one table's reference to a block that another table still holds.
  void DropSharedReference() { --m_References; }

  // Gives up one reference to block; the last one destroys the live places
  // [first, end) from the last down and frees the block.
  static void Release(cow_ListBlock* block, int first, int end) noexcept {
    if (--block->m_References != 0) return;
    DestroyItems(block->Items() + first, end - first);
    delete block;
  }

  // Copy-constructs count elements from source into raw places at
  // destination. If a copy throws, the ones already built are destroyed and
  // the places are raw again.
  static void CopyConstruct(T* destination, T const* source, int count) {
    if (count <= 0) return;
    if constexpr (std::is_trivially_copyable_v<T>) {
      std::memcpy(static_cast<void*>(destination), static_cast<void const*>(source),
                  sizeof(T) * static_cast<std::size_t>(count));
    } else {
      int built = 0;
      try {
        for (; built < count; ++built) ::new (static_cast<void*>(destination + built)) T(source[built]);
      } catch (...) {
        DestroyItems(destination, built);
        throw;
      }
    }
  }

  // Destroys count live elements at items, from the last down.
  static void DestroyItems(T* items, int count) noexcept {
    if constexpr (!std::is_trivially_destructible_v<T>) {
      for (int index = count - 1; index >= 0; --index) items[index].~T();
    } else {
      (void)items;
      (void)count;
    }
  }

private:
  std::int32_t m_References;
  void* m_Storage;
};

#endif
