#ifndef thr_Mutex_h
#define thr_Mutex_h

#include "ZQABasExport.h"
#include "mem_Alloc.h"

#include <mutex>

// A plain, non-recursive mutex.
class ZQA_EXPORT thr_Mutex : public mem_AllocationOperators {
public:
  thr_Mutex() = default;
  thr_Mutex(thr_Mutex const&) = delete;
  thr_Mutex& operator=(thr_Mutex const&) = delete;

  void Lock() { m_Mutex.lock(); }
  void Unlock() { m_Mutex.unlock(); }

private:
  std::mutex m_Mutex;
};

// Holds a thr_Mutex for the lifetime of a scope.
class thr_MutexGuard {
public:
  explicit thr_MutexGuard(thr_Mutex& mutex) : m_Mutex(mutex) { m_Mutex.Lock(); }
  ~thr_MutexGuard() { m_Mutex.Unlock(); }
  thr_MutexGuard(thr_MutexGuard const&) = delete;
  thr_MutexGuard& operator=(thr_MutexGuard const&) = delete;

private:
  thr_Mutex& m_Mutex;
};

#endif
