#include "ZQABasCoreUtils.h"

#include "ZQABasModuleGuard.h"
#include "atr_translate.h"

namespace {
ZQABasModuleGuard g_Guard;
}

void ZQABasCoreUtils_initialize(int& count) { g_Guard.Initialize(count); }

void ZQABasCoreUtils_finalize(int& count) {
  // A translator installed by the application does not outlive the library.
  if (g_Guard.Finalize(count)) atr_SetTranslator(nullptr);
}
