#ifndef thr_GlobalLock_h
#define thr_GlobalLock_h

#include "thr_Mutex.h"

// The one process-wide lock that guards the creation of the other locks and
// of thread keys. Its instance is built on first use in a way that two
// threads cannot race (a function-local static), so it is safe to reach
// before anything else exists.
class ZQA_EXPORT thr_GlobalLock {
public:
  static thr_GlobalLock& Instance();

  void Lock() { m_Mutex.Lock(); }
  void Unlock() { m_Mutex.Unlock(); }

private:
  thr_GlobalLock() = default;
  thr_Mutex m_Mutex;
};

// Holds the global lock for the lifetime of a scope.
class thr_GlobalLockGuard {
public:
  thr_GlobalLockGuard() { thr_GlobalLock::Instance().Lock(); }
  ~thr_GlobalLockGuard() { thr_GlobalLock::Instance().Unlock(); }
  thr_GlobalLockGuard(thr_GlobalLockGuard const&) = delete;
  thr_GlobalLockGuard& operator=(thr_GlobalLockGuard const&) = delete;
};

#endif
