#include "ZQARomCore.h"

#include "ZQABasModuleGuard.h"

namespace {
ZQABasModuleGuard g_Guard;
}

void ZQARomRfm_initialize(int& count) { g_Guard.Initialize(count); }

void ZQARomRfm_finalize(int& count) { g_Guard.Finalize(count); }
