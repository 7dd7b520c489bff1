#include "ZQABasAssert.h"

#include "atr_String.h"
#include "cow_String.h"
#include "nex_PrimException.h"

void nex_ThrowMessage(char const* sourcePath, int line, atr_StringBase const& text) {
  nex_PrimException<atr_String, 1>(text).Throw(sourcePath, line);
}

void nex_ThrowAssertion(char const* sourcePath, int line, char const* condition) {
  nex_PrimException<cow_String, 3>(cow_String(condition)).Throw(sourcePath, line);
}
