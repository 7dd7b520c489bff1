#include "rfm_HandleConverter.h"

#include <cstdint>
#include <cstring>

rfm_Handle rfm_HandleConverter::Internalize(omi_Swapper swapper, char const* source) {
  std::uint32_t word;
  std::memcpy(&word, source, sizeof word);
  if (swapper.Swap()) word = omi_SwapperGuts::Swap32(word);
  return rfm_Handle(static_cast<int>(word));
}

void rfm_HandleConverter::Externalize(omi_Swapper swapper, char* target, rfm_Handle value) {
  std::uint32_t word = static_cast<std::uint32_t>(value.Value());
  if (swapper.Swap()) word = omi_SwapperGuts::Swap32(word);
  std::memcpy(target, &word, sizeof word);
  std::memset(target + sizeof word, 0, 4);
}
