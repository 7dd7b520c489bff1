#ifndef rfm_SegmentBufferCache_h
#define rfm_SegmentBufferCache_h

#include "cow_List.h"
#include "rfm_SegmentBuffer.h"

#include <map>

class rfm_SegmentBufferHolder;

// The cache's record of one segment index that holds a buffer, and the
// holder to call before the buffer is taken away. The holder is set only
// while the segment has released the buffer.
struct rfm_SegmentBufferEntry {
  rfm_SegmentBuffer m_StreamBuffer;
  rfm_SegmentBufferHolder* m_Holder = nullptr;
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
// - m_Entries holds exactly the indices that hold a buffer, and m_Lru lists
//   each of them once; so memory follows the buffers held, never the
//   indices a file claims.
// - An entry's holder is null while its segment uses the buffer.
// - An entry stays where it is while it exists, so the buffer pointer Fetch
//   hands out is good until the buffer is taken back.
// - A call that raises (a holder that cannot save) changes nothing.
class rfm_SegmentBufferCache {
public:
  static constexpr int kBudget = 1 << 20;

  // An unsized cache, replaced once a file's segment size is known.
  rfm_SegmentBufferCache() = default;
  explicit rfm_SegmentBufferCache(int bufferSize);

  // The buffer of index, holding its old bytes if it still has it. A new
  // buffer may first have to be taken from a released segment, whose
  // holder saves it; when that raises, nothing has changed.
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
  // A buffer for a new entry: a fresh one while the budget allows or when
  // every buffer is in use, otherwise the oldest released one, saved first.
  rfm_SegmentBuffer ReclaimBuffer();
  int NextToReclaim() const;
  void InsertLru(int index) { m_Lru.Append(index); }
  void RemoveLru(int index);

  int m_BufferLimit = 0;
  int m_BufferSize = 0;
  std::map<int, rfm_SegmentBufferEntry> m_Entries;
  cow_List<int> m_Lru;
};

#endif
