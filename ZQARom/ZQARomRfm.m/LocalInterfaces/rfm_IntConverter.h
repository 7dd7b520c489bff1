#ifndef rfm_IntConverter_h
#define rfm_IntConverter_h

#include "omi_Swapper.h"

#include <cstdint>
#include <cstring>

// How a 32-bit integer is stored: 4 bytes, swapped when the file's byte
// order asks for it. Inline: row bitmaps and record lengths pass through
// it on hot paths.
class rfm_IntConverter {
public:
  static constexpr int ExternalSize() { return 4; }
  static std::int32_t Internalize(omi_Swapper swapper, char const* source) {
    std::uint32_t word;
    std::memcpy(&word, source, sizeof word);
    if (swapper.Swap()) word = omi_SwapperGuts::Swap32(word);
    return static_cast<std::int32_t>(word);
  }
  static void Externalize(omi_Swapper swapper, char* target, std::int32_t value) {
    auto word = static_cast<std::uint32_t>(value);
    if (swapper.Swap()) word = omi_SwapperGuts::Swap32(word);
    std::memcpy(target, &word, sizeof word);
  }
};

#endif
