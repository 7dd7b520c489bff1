#include "ZQABasCoreUtils.h"

#include "ZQABasModuleGuard.h"
#include "atr_translate.h"
#include "thr_ThrSingletonRegistry.h"

namespace {
ZQABasModuleGuard g_Guard;
}

void ZQABasCoreUtils_initialize(int& count) { g_Guard.Initialize(count); }

void ZQABasCoreUtils_finalize(int& count) {
  if (!g_Guard.Finalize(count)) return;
  // The shutting-down thread's per-thread singletons end here; those of
  // other threads end when their threads exit.
  thr_ThrSingletonRegistry::Instance().FinalizeAll();
  thr_ThrSingletonRegistry::Finalize();
  // A translator installed by the application does not outlive the library.
  atr_SetTranslator(nullptr);
}
