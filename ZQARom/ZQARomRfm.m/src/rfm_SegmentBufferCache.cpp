#include "rfm_SegmentBufferCache.h"

#include "ZQABasAssert.h"
#include "rfm_SegmentBufferHolder.h"

#include <utility>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SegmentBufferCache";
}

rfm_SegmentBufferCache::rfm_SegmentBufferCache(int bufferSize)
    : m_BufferLimit(kBudget / bufferSize), m_BufferSize(bufferSize) {}

rfm_SegmentBuffer* rfm_SegmentBufferCache::Fetch(int index) {
  auto found = m_Entries.find(index);
  if (found == m_Entries.end()) {
    rfm_SegmentBuffer buffer = ReclaimBuffer();
    found = m_Entries.emplace(index, rfm_SegmentBufferEntry()).first;
    found->second.m_StreamBuffer.Swap(buffer);
  } else {
    RemoveLru(index);
  }
  found->second.m_Holder = nullptr;
  InsertLru(index);
  return &found->second.m_StreamBuffer;
}

void rfm_SegmentBufferCache::Release(int index, rfm_SegmentBufferHolder* holder) {
  auto found = m_Entries.find(index);
  ZQA_ASSERT(kSourcePath, found != m_Entries.end());
  ZQA_ASSERT(kSourcePath, holder);
  found->second.m_Holder = holder;
}

void rfm_SegmentBufferCache::Forget(int index) {
  if (m_Entries.erase(index) != 0) RemoveLru(index);
}

rfm_SegmentBuffer rfm_SegmentBufferCache::ReclaimBuffer() {
  int victim = m_Lru.Length() < m_BufferLimit ? -1 : NextToReclaim();
  if (victim < 0) return rfm_SegmentBuffer(m_BufferSize);
  auto found = m_Entries.find(victim);
  // May raise: the victim then keeps its buffer, its holder and its place.
  found->second.m_Holder->DiscardBuffer(victim, &found->second.m_StreamBuffer);
  rfm_SegmentBuffer buffer;
  buffer.Swap(found->second.m_StreamBuffer);
  m_Entries.erase(found);
  RemoveLru(victim);
  return buffer;
}

int rfm_SegmentBufferCache::NextToReclaim() const {
  for (int place = 0; place < m_Lru.Length(); ++place) {
    int index = m_Lru[place];
    if (m_Entries.at(index).m_Holder != nullptr) return index;
  }
  return -1;
}

void rfm_SegmentBufferCache::RemoveLru(int index) {
  for (int place = 0; place < m_Lru.Length(); ++place) {
    if (m_Lru[place] == index) {
      m_Lru.RemoveIndex(place);
      return;
    }
  }
}
