#include "ZQARomCore.h"

#include "ZQABasModuleGuard.h"

namespace {
ZQABasModuleGuard g_Guard;
}

void ZQARomRds_initialize(int& count) { g_Guard.Initialize(count); }

void ZQARomRds_finalize(int& count) { g_Guard.Finalize(count); }
