#include "rfm_OffsetConverter.h"

#include <cstdint>
#include <cstring>

utl_FileOffset rfm_OffsetConverter::Internalize(omi_Swapper swapper, char const* source) {
  std::uint64_t bits;
  std::memcpy(&bits, source, sizeof bits);
  if (swapper.Swap()) bits = omi_SwapperGuts::Swap64(bits);
  double value;
  std::memcpy(&value, &bits, sizeof value);
  if (!(value >= 0.0 && value < static_cast<double>(kLargest))) return kInvalid;
  return static_cast<utl_FileOffset>(value + 0.5);
}

void rfm_OffsetConverter::Externalize(omi_Swapper swapper, char* target, utl_FileOffset value) {
  double stored = static_cast<double>(value);
  std::uint64_t bits;
  std::memcpy(&bits, &stored, sizeof bits);
  if (swapper.Swap()) bits = omi_SwapperGuts::Swap64(bits);
  std::memcpy(target, &bits, sizeof bits);
}
