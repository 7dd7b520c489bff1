#ifndef thr_ThrSingletonRegistry_h
#define thr_ThrSingletonRegistry_h

#include "ZQABasExport.h"
#include "thr_GlobalSingleton.h"

#include <vector>

// Remembers, for every per-thread singleton class in use, the function that
// ends the calling thread's instance of that class, so that shutdown can end
// them all without knowing the classes. Each finalizer is held once, in the
// order of first registration; the list is guarded by the class lock.
class ZQA_EXPORT thr_ThrSingletonRegistry : public thr_GlobalSingleton<thr_ThrSingletonRegistry> {
public:
  using Finalizer = void (*)();

  // Adds finalizer unless it is already registered.
  void Register(Finalizer finalizer);

  // Runs every registered finalizer, latest registration first, on the
  // calling thread. The finalizers stay registered: running them again ends
  // whatever instances the thread has made since.
  void FinalizeAll();

private:
  friend class thr_GlobalSingleton<thr_ThrSingletonRegistry>;
  thr_ThrSingletonRegistry() = default;
  ~thr_ThrSingletonRegistry() override = default;

  std::vector<Finalizer> m_Finalizers;
};

#endif
