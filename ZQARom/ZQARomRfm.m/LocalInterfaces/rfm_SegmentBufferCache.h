#ifndef rfm_SegmentBufferCache_h
#define rfm_SegmentBufferCache_h

#include "cow_List.h"
#include "rfm_SegmentBuffer.h"

class rfm_SegmentBufferHolder;

// The cache's record of one segment index: its buffer, if it has one, and
// the holder to call before the buffer is taken away. The holder is set
// only while the segment has released the buffer.
struct rfm_SegmentBufferEntry {
  rfm_SegmentBuffer m_StreamBuffer;
  rfm_SegmentBufferHolder* m_Holder = nullptr;
  int m_FetchCount = 0;
};

// The decoded segments of one compressed file share a budget of 1 MiB of
// buffers. A segment fetches its buffer while in use and releases it after;
// a released buffer keeps its bytes, so a segment used again soon needs no
// decoding. When the budget is spent, the buffer of the least recently
// fetched released segment is taken, after its holder saved it. Buffers of
// segments in use are never taken: the budget is a soft limit, and the cache
// allocates beyond it rather than fail.
//
// Invariants:
// - An index is in m_Lru at most once, and exactly when its entry holds a
//   buffer; so m_Lru's length is the number of buffers held.
// - An entry's holder is null while its segment uses the buffer.
// - Entries are only ever appended, and the list is never shared, so an
//   entry (and the buffer pointer Fetch hands out) stays where it is.
class rfm_SegmentBufferCache {
public:
  static constexpr int kBudget = 1 << 20;

  // An unsized cache, replaced once a file's segment size is known.
  rfm_SegmentBufferCache() = default;
  explicit rfm_SegmentBufferCache(int bufferSize);

  // The buffer of index, holding its old bytes if it still has it.
  rfm_SegmentBuffer* Fetch(int index);
  // The segment at index no longer uses its buffer; holder saves it if the
  // cache takes it.
  void Release(int index, rfm_SegmentBufferHolder* holder);
  // Drops index's buffer without calling its holder: the segment is gone.
  void Forget(int index);

  int BufferLimit() const { return m_BufferLimit; }
  int BuffersHeld() const { return m_Lru.Length(); }
  // The held indices, least recently fetched first.
  cow_List<int> const& Lru() const { return m_Lru; }

private:
  void ReclaimBuffer(rfm_SegmentBuffer* out);
  int NextToReclaim() const;
  void InsertLru(int index) { m_Lru.Append(index); }
  void RemoveLru(int index);

  int m_BufferLimit = 0;
  int m_BufferSize = 0;
  cow_List<rfm_SegmentBufferEntry> m_Entries;
  cow_List<int> m_Lru;
};

#endif
