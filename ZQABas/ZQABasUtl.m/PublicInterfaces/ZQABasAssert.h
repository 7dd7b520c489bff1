#ifndef ZQABasAssert_h
#define ZQABasAssert_h

#include "ZQABasExport.h"

class atr_StringBase;

// Raises nex_PrimException<atr_String, 1> carrying text.
[[noreturn]] ZQA_EXPORT void nex_ThrowMessage(char const* sourcePath, int line, atr_StringBase const& text);

// Raises nex_PrimException<cow_String, 3> carrying the failed condition.
[[noreturn]] ZQA_EXPORT void nex_ThrowAssertion(char const* sourcePath, int line, char const* condition);

// Checks an internal condition; the exception's text is the condition as
// written, e.g. ZQA_ASSERT(kSourcePath, !"Incorrect file access.").
#define ZQA_ASSERT(sourcePath, condition) \
  do { \
    if (!(condition)) nex_ThrowAssertion((sourcePath), __LINE__, #condition); \
  } while (0)

#endif
