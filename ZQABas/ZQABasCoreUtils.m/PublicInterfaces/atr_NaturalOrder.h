#ifndef atr_NaturalOrder_h
#define atr_NaturalOrder_h

#include "ZQABasExport.h"

// Whether the ordered containers compare strings in natural order ("a2"
// before "a10") instead of byte order. False unless a program sets it;
// nothing in the library does. Changing it while a database is open is not
// supported: stored orders would no longer match.
ZQA_EXPORT bool atr_getNaturalOrder();
ZQA_EXPORT void atr_setNaturalOrder(bool natural);

// Natural-order comparison: runs of digits compare by their numeric value
// (leading zeros ignored, a shorter run of significant digits is smaller),
// everything else byte by byte as unsigned characters. Negative, zero or
// positive like strcmp; null counts as the empty text.
ZQA_EXPORT int strnatcmp(char const* left, char const* right);

#endif
