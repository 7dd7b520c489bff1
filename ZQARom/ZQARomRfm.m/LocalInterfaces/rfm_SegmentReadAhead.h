#ifndef rfm_SegmentReadAhead_h
#define rfm_SegmentReadAhead_h

#include "rfm_SegmentBuffer.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

class rfm_Codec;

// Decodes the next segment of a file read in order on a thread of its own,
// while the reader works through the current one: reading a compressed
// file then costs about the larger of decoding and using the bytes, not
// their sum. One segment at a time; the reader's thread hands over the
// encoded bytes and takes the decoded ones. Only for files that do not
// change while open, since the stream is read ahead of its use.
//
// Invariant: the worker touches only the job's own buffers and the codec's
// Decode, which keeps no state between calls.
class rfm_SegmentReadAhead {
public:
  explicit rfm_SegmentReadAhead(rfm_Codec& codec) : m_Codec(codec) {}
  ~rfm_SegmentReadAhead();
  rfm_SegmentReadAhead(rfm_SegmentReadAhead const&) = delete;
  rfm_SegmentReadAhead& operator=(rfm_SegmentReadAhead const&) = delete;

  // Whether a job is still to be taken, and for which index.
  bool IsBusy() const;
  bool Has(int index) const;
  // Waits for the job and forgets it: the reader went elsewhere.
  void Drop();
  // Starts decoding encoded into a buffer of decodedSize bytes for index.
  void Start(int index, rfm_SegmentBuffer& encoded, int decodedSize);
  // When the job is for index, waits for it and swaps the decoded bytes
  // into *out; false when there is no such job or it failed, and the
  // caller decodes by itself (and reports any damage).
  bool Take(int index, rfm_SegmentBuffer* out);

private:
  void Work();

  rfm_Codec& m_Codec;
  mutable std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::thread m_Worker;
  bool m_Stopping = false;
  // The job: -1 for none. It is pending until the worker sets m_Done.
  int m_Index = -1;
  // Also read without the mutex by a reader or worker that spins briefly
  // before sleeping: a segment decodes in well under a millisecond, and a
  // sleep and wake-up on each side would cost a good part of that.
  std::atomic<bool> m_Done{false};
  std::atomic<bool> m_Pending{false};
  bool m_Failed = false;
  rfm_SegmentBuffer m_Encoded;
  rfm_SegmentBuffer m_Decoded;
};

#endif
