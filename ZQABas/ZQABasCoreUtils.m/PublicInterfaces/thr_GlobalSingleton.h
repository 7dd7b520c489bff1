#ifndef thr_GlobalSingleton_h
#define thr_GlobalSingleton_h

#include "ZQABasExport.h"
#include "thr_GlobalLock.h"
#include "thr_Mutex.h"

#include <atomic>
#include <cstdlib>

// Holds the one process-wide instance of T and the mutex that guards it.
//
// Invariants:
// - s_Instance is published (release) only after T's constructor has
//   finished, so a thread that reads it (acquire) outside any lock sees a
//   complete object. The base constructor records itself in s_Constructed,
//   which only the creating thread reads, under the class mutex.
// - s_Mutex, once set, stays until Finalize(); it is made under
//   thr_GlobalLock, so two threads never make two.
//
// Exported, so that the library and the application share one instance.
template <class T>
class ZQA_EXPORT thr_GlobalSingletonBase {
public:
  thr_GlobalSingletonBase(thr_GlobalSingletonBase const&) = delete;
  thr_GlobalSingletonBase& operator=(thr_GlobalSingletonBase const&) = delete;

  // The class mutex, for callers that share the instance between threads.
  static void Lock() { ClassMutex().Lock(); }
  static void Unlock() {
    thr_Mutex* mutex = s_Mutex.load(std::memory_order_acquire);
    if (mutex == nullptr) std::abort();
    mutex->Unlock();
  }

  // Destroys the instance and then the class mutex. Meant for shutdown: no
  // other thread may be using the instance or holding its lock. The
  // instance is destroyed outside any lock, as its destructor may itself
  // reach for Lock() or for other singletons.
  static void Finalize() {
    delete s_Instance.exchange(nullptr, std::memory_order_acq_rel);
    thr_GlobalLockGuard guard;
    delete s_Mutex.exchange(nullptr, std::memory_order_acq_rel);
  }

protected:
  thr_GlobalSingletonBase() { s_Constructed = this; }
  virtual ~thr_GlobalSingletonBase() {
    if (s_Constructed == this) s_Constructed = nullptr;
  }

  // The class mutex, made on first use under thr_GlobalLock.
  static thr_Mutex& ClassMutex() {
    if (thr_Mutex* mutex = s_Mutex.load(std::memory_order_acquire)) return *mutex;
    thr_GlobalLockGuard guard;
    thr_Mutex* mutex = s_Mutex.load(std::memory_order_relaxed);
    if (mutex == nullptr) {
      mutex = new thr_Mutex;
      s_Mutex.store(mutex, std::memory_order_release);
    }
    return *mutex;
  }

  static inline std::atomic<thr_GlobalSingletonBase*> s_Instance{nullptr};
  static inline thr_GlobalSingletonBase* s_Constructed = nullptr;
  static inline std::atomic<thr_Mutex*> s_Mutex{nullptr};
};

// A lazily made singleton shared by all threads. Creation is double-checked:
// the common path is one acquire load; the first callers serialise on the
// class mutex and exactly one of them constructs. T derives from
// thr_GlobalSingleton<T> and may keep its constructor private, naming
// thr_GlobalSingleton<T> a friend. Using the instance from several threads
// is guarded by Lock()/Unlock() (or thr_GlobalSingletonGuard<T>).
template <class T>
class ZQA_EXPORT thr_GlobalSingleton : public thr_GlobalSingletonBase<T> {
  using Base = thr_GlobalSingletonBase<T>;

public:
  static T& Instance() {
    if (Base* existing = Base::s_Instance.load(std::memory_order_acquire)) return static_cast<T&>(*existing);
    thr_MutexGuard guard(Base::ClassMutex());
    if (Base* existing = Base::s_Instance.load(std::memory_order_relaxed)) return static_cast<T&>(*existing);
    T* made = new T;
    if (Base::s_Constructed != made) std::abort();
    Base::s_Instance.store(made, std::memory_order_release);
    return *made;
  }

protected:
  thr_GlobalSingleton() = default;
  ~thr_GlobalSingleton() override = default;
};

// Holds the lock of the global singleton T for the lifetime of a scope.
template <class T>
class thr_GlobalSingletonGuard {
public:
  thr_GlobalSingletonGuard() { thr_GlobalSingleton<T>::Lock(); }
  ~thr_GlobalSingletonGuard() { thr_GlobalSingleton<T>::Unlock(); }
  thr_GlobalSingletonGuard(thr_GlobalSingletonGuard const&) = delete;
  thr_GlobalSingletonGuard& operator=(thr_GlobalSingletonGuard const&) = delete;
};

#endif
