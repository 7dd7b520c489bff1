#include "rfm_SegmentReadAhead.h"

#include "rfm_Codec.h"

#include <chrono>

namespace {

// How long a thread polls before it sleeps.
constexpr auto kSpin = std::chrono::microseconds(300);

template <class Ready>
void SpinFor(Ready ready) {
  auto const until = std::chrono::steady_clock::now() + kSpin;
  while (!ready() && std::chrono::steady_clock::now() < until) {
  }
}

}  // namespace

rfm_SegmentReadAhead::~rfm_SegmentReadAhead() {
  {
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_Stopping = true;
  }
  m_Changed.notify_all();
  if (m_Worker.joinable()) m_Worker.join();
}

bool rfm_SegmentReadAhead::IsBusy() const {
  std::lock_guard<std::mutex> lock(m_Mutex);
  return m_Index >= 0;
}

bool rfm_SegmentReadAhead::Has(int index) const {
  std::lock_guard<std::mutex> lock(m_Mutex);
  return m_Index == index;
}

void rfm_SegmentReadAhead::Drop() {
  std::unique_lock<std::mutex> lock(m_Mutex);
  if (m_Index < 0) return;
  m_Changed.wait(lock, [this] { return m_Done.load(); });
  m_Index = -1;
}

void rfm_SegmentReadAhead::Start(int index, rfm_SegmentBuffer& encoded, int decodedSize) {
  rfm_SegmentBuffer decoded(decodedSize);
  {
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Index >= 0) return;
    m_Index = index;
    m_Done = false;
    m_Failed = false;
    m_Encoded.Swap(encoded);
    m_Decoded.Swap(decoded);
    m_Pending.store(true, std::memory_order_release);
  }
  if (!m_Worker.joinable()) m_Worker = std::thread(&rfm_SegmentReadAhead::Work, this);
  m_Changed.notify_all();
}

bool rfm_SegmentReadAhead::Take(int index, rfm_SegmentBuffer* out) {
  if (!Has(index)) return false;
  SpinFor([this] { return m_Done.load(std::memory_order_acquire); });
  std::unique_lock<std::mutex> lock(m_Mutex);
  m_Changed.wait(lock, [this] { return m_Done.load(); });
  bool taken = !m_Failed && m_Decoded.Size() == out->Size();
  if (taken) out->Swap(m_Decoded);
  m_Index = -1;
  return taken;
}

void rfm_SegmentReadAhead::Work() {
  std::unique_lock<std::mutex> lock(m_Mutex);
  for (;;) {
    lock.unlock();
    SpinFor([this] { return m_Pending.load(std::memory_order_acquire); });
    lock.lock();
    m_Changed.wait(lock, [this] { return m_Stopping || m_Pending.load(); });
    if (m_Stopping) return;
    m_Pending.store(false);
    lock.unlock();
    // The buffers belong to the job until m_Done is set: the reader's thread
    // only waits for it meanwhile.
    bool const failed = !m_Codec.Decode(&m_Decoded, m_Encoded);
    lock.lock();
    m_Failed = failed;
    m_Done = true;
    m_Changed.notify_all();
  }
}
