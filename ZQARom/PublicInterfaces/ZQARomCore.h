#ifndef ZQARomCore_h
#define ZQARomCore_h

#include "ZQABasExport.h"

// Start-up and shutdown of the library. ZQARomCore_initialize starts the
// support libraries and then the record store, remote access, object
// persistence and conversion modules, in that order; ZQARomCore_finalize ends
// them in exactly the reverse order. Each module runs its work on its first
// start and on the stop that balances it, and then raises count by one.
// Call both from one thread.
ZQA_EXPORT void ZQARomCore_initialize(int& count);
ZQA_EXPORT void ZQARomCore_finalize(int& count);

ZQA_EXPORT void ZQARomRfm_initialize(int& count);
ZQA_EXPORT void ZQARomRfm_finalize(int& count);
ZQA_EXPORT void ZQARomRds_initialize(int& count);
ZQA_EXPORT void ZQARomRds_finalize(int& count);
ZQA_EXPORT void ZQARomRom_initialize(int& count);
ZQA_EXPORT void ZQARomRom_finalize(int& count);
ZQA_EXPORT void ZQARomDbc_initialize(int& count);
ZQA_EXPORT void ZQARomDbc_finalize(int& count);
ZQA_EXPORT void ZQARomCore_specific_initialize(int& count);
ZQA_EXPORT void ZQARomCore_specific_finalize(int& count);

#endif
