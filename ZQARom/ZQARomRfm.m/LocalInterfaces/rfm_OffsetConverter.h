#ifndef rfm_OffsetConverter_h
#define rfm_OffsetConverter_h

#include "omi_Swapper.h"
#include "utl_FileOffset.h"

// How a file offset or object size is stored: an IEEE double of 8 bytes,
// exact up to 2^53, swapped as one 64-bit unit when the file's byte order
// asks for it. Reading adds 0.5 and truncates.
class rfm_OffsetConverter {
public:
  // What a stored value that can be no offset reads as (negative, NaN, or
  // beyond 2^62): every caller treats a negative offset as damage.
  static constexpr utl_FileOffset kInvalid = -1;
  // Every value read is below this (2^62): no file reaches it, and sums of
  // a few such values cannot overflow.
  static constexpr utl_FileOffset kLargest = utl_FileOffset(1) << 62;

  static constexpr int ExternalSize() { return 8; }
  static utl_FileOffset Internalize(omi_Swapper swapper, char const* source);
  static void Externalize(omi_Swapper swapper, char* target, utl_FileOffset value);
};

#endif
