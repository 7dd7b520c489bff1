#ifndef ZQABasModuleGuard_h
#define ZQABasModuleGuard_h

#include "ZQABasExport.h"

// Counts the start-up and shutdown calls of one module so that its work runs
// once: Initialize answers true on the first call and Finalize on the call
// that balances it. Each of those two calls also raises the caller's
// counter, which tells the caller how many modules really started or ended.
// Start-up and shutdown run on one thread.
class ZQA_EXPORT ZQABasModuleGuard {
public:
  bool Initialize(int& count) {
    if (m_Calls++ != 0) return false;
    ++count;
    return true;
  }
  bool Finalize(int& count) {
    if (m_Calls == 0 || --m_Calls != 0) return false;
    ++count;
    return true;
  }

private:
  int m_Calls = 0;
};

#endif
