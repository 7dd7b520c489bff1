#ifndef thr_ThreadSingleton_h
#define thr_ThreadSingleton_h

#include "ZQABasExport.h"
#include "thr_GlobalLock.h"
#include "thr_ThrSingletonRegistry.h"

#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <system_error>

// Holds the pthread key whose slot, in each thread, points at that thread's
// instance of T, and the number of instances alive in all threads.
//
// Invariants:
// - The key is made once, under thr_GlobalLock, and s_KeyReady is released
//   only after it is; a thread that sees s_KeyReady (acquire) sees the key.
// - s_References, guarded by thr_GlobalLock, counts the constructed
//   instances not yet destroyed, in all threads.
// - A thread's slot is null or points at the base of its own live instance.
//   The destructor clears the slot, so a T whose construction fails, or one
//   ended early by its finalizer, leaves no dangling slot behind.
//
// The key outlives the last instance: when s_References drops to zero it is
// kept for the life of the process, not deleted. Another thread may be
// between reading s_KeyReady and calling pthread_getspecific, and a deleted
// key number can be handed to an unrelated pthread_key_create, after which
// that thread would read a slot that belongs to someone else. Keeping it
// costs one key per class. It is also safe when the library is unloaded:
// pthread runs DeleteKey only for slots that are not null, and with no live
// instance every slot is null.
//
// Exported, so that the library and the application share one key per T.
template <class T>
class ZQA_EXPORT thr_ThreadSingletonBase {
public:
  thr_ThreadSingletonBase(thr_ThreadSingletonBase const&) = delete;
  thr_ThreadSingletonBase& operator=(thr_ThreadSingletonBase const&) = delete;

  // Instances of T alive in all threads.
  static int LiveInstances() {
    thr_GlobalLockGuard guard;
    return s_References;
  }

  // Ends the calling thread's instance, if it has one. This is the
  // finalizer that Instance() registers with thr_ThrSingletonRegistry.
  static void FinalizeCurrentThread() { delete Current(); }

protected:
  thr_ThreadSingletonBase() {
    {
      thr_GlobalLockGuard guard;
      if (!s_KeyReady.load(std::memory_order_relaxed)) {
        int error = pthread_key_create(&s_Key, &DeleteKey);
        if (error != 0) throw std::system_error(error, std::generic_category(), "pthread_key_create");
        s_KeyReady.store(true, std::memory_order_release);
      }
      ++s_References;
    }
    if (int error = pthread_setspecific(s_Key, this); error != 0) {
      thr_GlobalLockGuard guard;
      --s_References;
      throw std::system_error(error, std::generic_category(), "pthread_setspecific");
    }
  }

  virtual ~thr_ThreadSingletonBase() {
    // At thread exit pthread has already emptied the slot before DeleteKey.
    if (pthread_getspecific(s_Key) == this) pthread_setspecific(s_Key, nullptr);
    thr_GlobalLockGuard guard;
    --s_References;
  }

  // The calling thread's instance, or null.
  static thr_ThreadSingletonBase* Current() {
    if (!s_KeyReady.load(std::memory_order_acquire)) return nullptr;
    return static_cast<thr_ThreadSingletonBase*>(pthread_getspecific(s_Key));
  }

private:
  // Called by pthread at thread exit with the thread's instance.
  static void DeleteKey(void* instance) { delete static_cast<thr_ThreadSingletonBase*>(instance); }

  static inline pthread_key_t s_Key{};
  static inline std::atomic<bool> s_KeyReady{false};
  static inline int s_References = 0;
};

// A lazily made singleton per thread: each thread that asks gets its own T,
// destroyed when the thread exits or when thr_ThrSingletonRegistry's
// FinalizeAll() runs on it. T derives from thr_ThreadSingleton<T> and may
// keep its constructor private, naming thr_ThreadSingleton<T> a friend.
template <class T>
class ZQA_EXPORT thr_ThreadSingleton : public thr_ThreadSingletonBase<T> {
  using Base = thr_ThreadSingletonBase<T>;

public:
  static T& Instance() {
    if (Base* current = Base::Current()) return static_cast<T&>(*current);
    thr_ThrSingletonRegistry::Instance().Register(&Base::FinalizeCurrentThread);
    T* made = new T;
    if (Base::Current() != made) std::abort();
    return *made;
  }

protected:
  thr_ThreadSingleton() = default;
  ~thr_ThreadSingleton() override = default;
};

#endif
