#include "ZQARomCore.h"

#include "ZQABasModuleGuard.h"

namespace {
ZQABasModuleGuard g_Guard;
}

void ZQARomDbc_initialize(int& count) { g_Guard.Initialize(count); }

void ZQARomDbc_finalize(int& count) { g_Guard.Finalize(count); }
