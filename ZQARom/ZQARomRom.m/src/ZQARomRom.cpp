#include "ZQARomCore.h"

#include "ZQABasModuleGuard.h"

namespace {
ZQABasModuleGuard g_Guard;
}

void ZQARomRom_initialize(int& count) { g_Guard.Initialize(count); }

void ZQARomRom_finalize(int& count) { g_Guard.Finalize(count); }
