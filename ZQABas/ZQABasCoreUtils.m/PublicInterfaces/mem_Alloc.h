#ifndef mem_Alloc_h
#define mem_Alloc_h

#include "ZQABasExport.h"

#include <cstddef>

// The library's allocators. None of them returns null: a failed allocation
// throws std::bad_alloc. A request for zero bytes still yields a unique
// pointer that mem_Free accepts.

ZQA_EXPORT void* mem_Malloc(std::size_t size);
ZQA_EXPORT void* mem_Realloc(void* block, std::size_t size);
ZQA_EXPORT void mem_Free(void* block) noexcept;

// Allocation of class instances; mem_OperatorNewTinyThrow serves the small
// counts of the handle classes.
ZQA_EXPORT void* mem_OperatorNewThrow(std::size_t size);
ZQA_EXPORT void* mem_OperatorNewTinyThrow(std::size_t size);
ZQA_EXPORT void mem_OperatorDelete(void* block) noexcept;

// Base class that routes new and delete of a class through the allocators.
class ZQA_EXPORT mem_AllocationOperators {
public:
  static void* operator new(std::size_t size) { return mem_OperatorNewThrow(size); }
  static void* operator new[](std::size_t size) { return mem_OperatorNewThrow(size); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* block) noexcept { mem_OperatorDelete(block); }
  static void operator delete[](void* block) noexcept { mem_OperatorDelete(block); }
  static void operator delete(void*, void*) noexcept {}
};

#endif
