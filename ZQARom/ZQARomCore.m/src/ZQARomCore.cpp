#include "ZQARomCore.h"

#include "ZQABasCoreUtils.h"
#include "ZQABasModuleGuard.h"

#include <iterator>

namespace {

ZQABasModuleGuard g_Library;
ZQABasModuleGuard g_Specific;

using EntryPoint = void (*)(int&);

// Start-up order; shutdown walks it backwards.
struct Module {
  EntryPoint initialize;
  EntryPoint finalize;
};
Module const kModules[] = {
    {ZQABasCoreUtils_initialize, ZQABasCoreUtils_finalize},
    {ZQARomRfm_initialize, ZQARomRfm_finalize},
    {ZQARomRds_initialize, ZQARomRds_finalize},
    {ZQARomRom_initialize, ZQARomRom_finalize},
    {ZQARomDbc_initialize, ZQARomDbc_finalize},
    {ZQARomCore_specific_initialize, ZQARomCore_specific_finalize},
};

}  // namespace

void ZQARomCore_specific_initialize(int& count) { g_Specific.Initialize(count); }

void ZQARomCore_specific_finalize(int& count) { g_Specific.Finalize(count); }

void ZQARomCore_initialize(int& count) {
  int ignored = 0;
  if (!g_Library.Initialize(ignored)) return;
  for (Module const& module : kModules) module.initialize(count);
}

void ZQARomCore_finalize(int& count) {
  int ignored = 0;
  if (!g_Library.Finalize(ignored)) return;
  for (auto module = std::rbegin(kModules); module != std::rend(kModules); ++module) module->finalize(count);
}
