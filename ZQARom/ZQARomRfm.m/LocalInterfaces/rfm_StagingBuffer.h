#ifndef rfm_StagingBuffer_h
#define rfm_StagingBuffer_h

#include "mem_Alloc.h"

#include <cstddef>
#include <memory>

// Room for one operation's bytes: on the stack when small, on the heap
// otherwise, so that the common small array costs no allocation.
class rfm_StagingBuffer {
public:
  static constexpr int kStackBytes = 4096;

  explicit rfm_StagingBuffer(int bytes) {
    if (bytes > kStackBytes) m_Heap.reset(static_cast<char*>(mem_Malloc(static_cast<std::size_t>(bytes))));
  }
  char* Data() { return m_Heap ? m_Heap.get() : m_Stack; }

private:
  struct Free {
    void operator()(char* block) const { mem_Free(block); }
  };
  char m_Stack[kStackBytes];
  std::unique_ptr<char, Free> m_Heap;
};

#endif
