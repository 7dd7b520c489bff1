#include "thr_ThrSingletonRegistry.h"

#include <algorithm>

void thr_ThrSingletonRegistry::Register(Finalizer finalizer) {
  thr_GlobalSingletonGuard<thr_ThrSingletonRegistry> guard;
  if (std::find(m_Finalizers.begin(), m_Finalizers.end(), finalizer) == m_Finalizers.end())
    m_Finalizers.push_back(finalizer);
}

void thr_ThrSingletonRegistry::FinalizeAll() {
  // The finalizers run outside the lock: an instance's destructor may make
  // another per-thread singleton, which registers its class.
  std::vector<Finalizer> finalizers;
  {
    thr_GlobalSingletonGuard<thr_ThrSingletonRegistry> guard;
    finalizers = m_Finalizers;
  }
  for (auto finalizer = finalizers.rbegin(); finalizer != finalizers.rend(); ++finalizer) (*finalizer)();
}
