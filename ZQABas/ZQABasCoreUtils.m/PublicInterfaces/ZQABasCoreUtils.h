#ifndef ZQABasCoreUtils_h
#define ZQABasCoreUtils_h

#include "ZQABasExport.h"

// Start-up and shutdown of the support library.
ZQA_EXPORT void ZQABasCoreUtils_initialize(int& count);
ZQA_EXPORT void ZQABasCoreUtils_finalize(int& count);

#endif
