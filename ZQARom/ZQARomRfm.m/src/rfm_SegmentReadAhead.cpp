#include "rfm_SegmentReadAhead.h"

#include "rfm_Codec.h"

#include <pthread.h>
#include <system_error>

namespace {

// Guards the list below and every start and end of a worker. Held from
// just before a fork until just after it, in the parent and in the child.
std::mutex gListLock;
rfm_SegmentReadAhead* gFirst = nullptr;
std::once_flag gForkHandlersOnce;
bool gForkHandlersInstalled = false;

}  // namespace

// The read-aheads of the process, so that a fork can end their workers
// first. A process where the fork handlers could not be installed starts no
// worker: its files decode on the reader's thread.
class rfm_SegmentReadAheadList {
public:
  static void Add(rfm_SegmentReadAhead* item) {
    std::call_once(gForkHandlersOnce, [] {
      gForkHandlersInstalled = ::pthread_atfork(&BeforeFork, &AfterFork, &AfterFork) == 0;
    });
    std::lock_guard<std::mutex> lock(gListLock);
    item->m_Next = gFirst;
    if (gFirst) gFirst->m_Previous = item;
    gFirst = item;
  }

  // With the list locked.
  static void Remove(rfm_SegmentReadAhead* item) {
    if (item->m_Previous) item->m_Previous->m_Next = item->m_Next;
    if (item->m_Next) item->m_Next->m_Previous = item->m_Previous;
    if (gFirst == item) gFirst = item->m_Next;
  }

private:
  // A worker may be decoding, and it may hold its mutex or wait on its
  // condition: each finishes its job and ends, and the list stays locked
  // so that none starts again before the fork is done.
  static void BeforeFork() {
    gListLock.lock();
    for (rfm_SegmentReadAhead* item = gFirst; item; item = item->m_Next) item->StopWorker();
  }

  static void AfterFork() { gListLock.unlock(); }
};

rfm_SegmentReadAhead::rfm_SegmentReadAhead(rfm_Codec& codec) : m_Codec(codec) {
  rfm_SegmentReadAheadList::Add(this);
}

rfm_SegmentReadAhead::~rfm_SegmentReadAhead() {
  std::lock_guard<std::mutex> lock(gListLock);
  StopWorker();
  rfm_SegmentReadAheadList::Remove(this);
}

bool rfm_SegmentReadAhead::Has(int index) const {
  std::lock_guard<std::mutex> lock(m_Mutex);
  return m_Job != Job::kNone && m_Index == index;
}

void rfm_SegmentReadAhead::Drop() {
  std::unique_lock<std::mutex> lock(m_Mutex);
  m_Finished.wait(lock, [this] { return m_Job != Job::kDecoding; });
  m_Job = Job::kNone;
  m_Index = -1;
}

void rfm_SegmentReadAhead::Start(int index, rfm_SegmentBuffer& encoded, int decodedSize) {
  {
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Job != Job::kNone) return;
    // The buffer the reader took last came back in exchange: keep it.
    if (m_Decoded.Size() != decodedSize) {
      rfm_SegmentBuffer decoded(decodedSize);
      m_Decoded.Swap(decoded);
    }
    m_Encoded.Swap(encoded);
    m_Index = index;
    m_Job = Job::kPending;
  }
  bool started = false;
  try {
    std::lock_guard<std::mutex> list(gListLock);
    StartWorker();
    started = m_Worker.joinable();
  } catch (std::system_error const&) {
    // No thread to be had: the reader decodes by itself.
  }
  if (!started) {
    Drop();
    return;
  }
  m_Posted.notify_one();
}

bool rfm_SegmentReadAhead::Take(int index, rfm_SegmentBuffer* out) {
  std::unique_lock<std::mutex> lock(m_Mutex);
  if (m_Job == Job::kNone || m_Index != index) return false;
  if (m_Job == Job::kPending) {
    // The worker has not woken up yet: decoding here costs the same
    // processor time as waiting would, and no wake-up on either side.
    m_Job = Job::kNone;
    m_Index = -1;
    lock.unlock();
    return m_Codec.Decode(out, m_Encoded);
  }
  m_Finished.wait(lock, [this] { return m_Job == Job::kDone || m_Job == Job::kFailed; });
  bool const taken = m_Job == Job::kDone && m_Decoded.Size() == out->Size();
  if (taken) out->Swap(m_Decoded);
  m_Job = Job::kNone;
  m_Index = -1;
  return taken;
}

void rfm_SegmentReadAhead::StartWorker() {
  if (m_Worker.joinable() || !gForkHandlersInstalled) return;
  m_Worker = std::thread(&rfm_SegmentReadAhead::Work, this);
}

void rfm_SegmentReadAhead::StopWorker() {
  if (!m_Worker.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_Stopping = true;
  }
  m_Posted.notify_one();
  m_Worker.join();
  std::lock_guard<std::mutex> lock(m_Mutex);
  m_Stopping = false;
}

void rfm_SegmentReadAhead::Work() {
  std::unique_lock<std::mutex> lock(m_Mutex);
  for (;;) {
    m_Posted.wait(lock, [this] { return m_Stopping || m_Job == Job::kPending; });
    // A posted job is finished even when asked to stop: the reader, in
    // this process or in a forked child, then takes it.
    if (m_Job != Job::kPending) return;
    m_Job = Job::kDecoding;
    lock.unlock();
    bool decoded = false;
    try {
      decoded = m_Codec.Decode(&m_Decoded, m_Encoded);
    } catch (...) {
      // A codec that throws here fails the job; the reader decodes again
      // and meets the failure on its own thread.
    }
    lock.lock();
    m_Job = decoded ? Job::kDone : Job::kFailed;
    m_Finished.notify_one();
  }
}
