#ifndef rfm_OffsetConverter_h
#define rfm_OffsetConverter_h

#include "omi_Swapper.h"
#include "utl_FileOffset.h"

#include <cstdint>
#include <cstring>

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
  // Inline: every string field of every row passes through them.
  static utl_FileOffset Internalize(omi_Swapper swapper, char const* source) {
    std::uint64_t bits;
    std::memcpy(&bits, source, sizeof bits);
    if (swapper.Swap()) bits = omi_SwapperGuts::Swap64(bits);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!(value >= 0.0 && value < static_cast<double>(kLargest))) return kInvalid;
    return static_cast<utl_FileOffset>(value + 0.5);
  }
  static void Externalize(omi_Swapper swapper, char* target, utl_FileOffset value) {
    double stored = static_cast<double>(value);
    std::uint64_t bits;
    std::memcpy(&bits, &stored, sizeof bits);
    if (swapper.Swap()) bits = omi_SwapperGuts::Swap64(bits);
    std::memcpy(target, &bits, sizeof bits);
  }
};

#endif
