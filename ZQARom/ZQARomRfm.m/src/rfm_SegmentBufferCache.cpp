#include "rfm_SegmentBufferCache.h"

#include "ZQABasAssert.h"
#include "rfm_SegmentBufferHolder.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SegmentBufferCache";
}

rfm_SegmentBufferCache::rfm_SegmentBufferCache(int bufferSize)
    : m_BufferLimit(kBudget / bufferSize), m_BufferSize(bufferSize) {}

rfm_SegmentBuffer* rfm_SegmentBufferCache::Fetch(int index) {
  if (index >= m_Entries.Length()) {
    m_Entries.Resize(index + 1);
    ZQA_ASSERT(kSourcePath, m_Entries.Length() == index + 1);
  }
  RemoveLru(index);
  rfm_SegmentBufferEntry& entry = m_Entries.Get(index);
  if (entry.m_StreamBuffer.Size() == 0) ReclaimBuffer(&entry.m_StreamBuffer);
  entry.m_Holder = nullptr;
  ++entry.m_FetchCount;
  InsertLru(index);
  return &entry.m_StreamBuffer;
}

void rfm_SegmentBufferCache::Release(int index, rfm_SegmentBufferHolder* holder) {
  ZQA_ASSERT(kSourcePath, index < m_Entries.Length());
  ZQA_ASSERT(kSourcePath, holder);
  rfm_SegmentBufferEntry& entry = m_Entries.Get(index);
  ZQA_ASSERT(kSourcePath, entry.m_StreamBuffer.Size() > 0);
  entry.m_Holder = holder;
}

void rfm_SegmentBufferCache::Forget(int index) {
  if (index >= m_Entries.Length()) return;
  rfm_SegmentBufferEntry& entry = m_Entries.Get(index);
  rfm_SegmentBuffer().Swap(entry.m_StreamBuffer);
  entry.m_Holder = nullptr;
  RemoveLru(index);
}

void rfm_SegmentBufferCache::ReclaimBuffer(rfm_SegmentBuffer* out) {
  int victim = m_Lru.Length() < m_BufferLimit ? -1 : NextToReclaim();
  if (victim < 0) {
    rfm_SegmentBuffer fresh(m_BufferSize);
    out->Swap(fresh);
    return;
  }
  rfm_SegmentBufferEntry& entry = m_Entries.Get(victim);
  entry.m_Holder->DiscardBuffer(victim, &entry.m_StreamBuffer);
  entry.m_Holder = nullptr;
  out->Swap(entry.m_StreamBuffer);
  RemoveLru(victim);
}

int rfm_SegmentBufferCache::NextToReclaim() const {
  for (int place = 0; place < m_Lru.Length(); ++place) {
    int index = m_Lru[place];
    if (m_Entries[index].m_Holder != nullptr) return index;
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
