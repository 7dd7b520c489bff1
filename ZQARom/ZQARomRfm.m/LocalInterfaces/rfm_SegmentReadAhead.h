#ifndef rfm_SegmentReadAhead_h
#define rfm_SegmentReadAhead_h

#include "rfm_SegmentBuffer.h"

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
// Both threads sleep while they wait; nothing polls. The worker starts
// with the first job and lives until the object ends, except across a
// fork: every worker of the process finishes its job and ends before the
// fork, and starts again with the next job, in the parent and in the
// child alike, so no process ever holds a thread object, mutex or
// condition that a thread missing from it could own.
//
// Invariant: while a job is decoding, the worker alone touches the job's
// buffers; the codec's Decode keeps no state between calls.
class rfm_SegmentReadAhead {
public:
  explicit rfm_SegmentReadAhead(rfm_Codec& codec);
  ~rfm_SegmentReadAhead();
  rfm_SegmentReadAhead(rfm_SegmentReadAhead const&) = delete;
  rfm_SegmentReadAhead& operator=(rfm_SegmentReadAhead const&) = delete;

  // Whether the job is for index.
  bool Has(int index) const;
  // Forgets the job, after waiting for it if it is decoding: the reader
  // went elsewhere.
  void Drop();
  // Starts decoding encoded into a buffer of decodedSize bytes for index;
  // nothing when a job is still to be taken.
  void Start(int index, rfm_SegmentBuffer& encoded, int decodedSize);
  // When the job is for index, waits for it and swaps the decoded bytes
  // into *out, or decodes into *out here when the worker has not started
  // on it yet; false when there is no such job or it failed, and the
  // caller decodes by itself (and reports any damage).
  bool Take(int index, rfm_SegmentBuffer* out);

private:
  enum class Job { kNone, kPending, kDecoding, kDone, kFailed };

  void Work();
  // Both run with the process's list of read-aheads locked.
  void StartWorker();
  void StopWorker();

  friend class rfm_SegmentReadAheadList;

  rfm_Codec& m_Codec;
  mutable std::mutex m_Mutex;
  std::condition_variable m_Posted;    // a job to decode, or a stop
  std::condition_variable m_Finished;  // the job decoded or failed
  bool m_Stopping = false;
  Job m_Job = Job::kNone;
  int m_Index = -1;
  rfm_SegmentBuffer m_Encoded;
  rfm_SegmentBuffer m_Decoded;
  // Joined or started only with the list locked.
  std::thread m_Worker;
  // The list of the process's read-aheads, for the fork handlers.
  rfm_SegmentReadAhead* m_Previous = nullptr;
  rfm_SegmentReadAhead* m_Next = nullptr;
};

#endif
