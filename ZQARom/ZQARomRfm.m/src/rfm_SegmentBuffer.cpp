#include "rfm_SegmentBuffer.h"

#include "ZQABasAssert.h"
#include "mem_Alloc.h"

#include <cstring>
#include <utility>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SegmentBuffer";
}

rfm_SegmentBuffer::rfm_SegmentBuffer(int size) {
  ZQA_ASSERT(kSourcePath, size >= 0);
  if (size == 0) return;
  m_Data = static_cast<char*>(mem_Malloc(static_cast<std::size_t>(size)));
  m_Size = size;
}

rfm_SegmentBuffer::rfm_SegmentBuffer(rfm_SegmentBuffer const& other) : rfm_SegmentBuffer(other.m_Size) {
  if (m_Size != 0) std::memcpy(m_Data, other.m_Data, static_cast<std::size_t>(m_Size));
}

rfm_SegmentBuffer& rfm_SegmentBuffer::operator=(rfm_SegmentBuffer const& other) {
  rfm_SegmentBuffer copy(other);
  Swap(copy);
  return *this;
}

rfm_SegmentBuffer::~rfm_SegmentBuffer() { mem_Free(m_Data); }

void rfm_SegmentBuffer::Swap(rfm_SegmentBuffer& other) noexcept {
  std::swap(m_Data, other.m_Data);
  std::swap(m_Size, other.m_Size);
}

void rfm_SegmentBuffer::Fill(char value) {
  if (m_Size != 0) std::memset(m_Data, value, static_cast<std::size_t>(m_Size));
}

void rfm_SegmentBuffer::Trim(int newSize) {
  ZQA_ASSERT(kSourcePath, newSize <= m_Size);
  ZQA_ASSERT(kSourcePath, newSize >= 0);
  m_Size = newSize;
}
