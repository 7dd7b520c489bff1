#include "mem_Alloc.h"

#include <cstdlib>
#include <new>

void* mem_Malloc(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* mem_Realloc(void* block, std::size_t size) {
  void* grown = std::realloc(block, size == 0 ? 1 : size);
  if (grown == nullptr) throw std::bad_alloc();
  return grown;
}

void mem_Free(void* block) noexcept { std::free(block); }

void* mem_OperatorNewThrow(std::size_t size) { return mem_Malloc(size); }

void* mem_OperatorNewTinyThrow(std::size_t size) { return mem_Malloc(size); }

void mem_OperatorDelete(void* block) noexcept { std::free(block); }
