#include "omi_Swapper.h"

#include <cstdlib>

namespace {

template <class Word, Word (*Reverse)(Word)>
void SwapWords(unsigned char* to, unsigned char const* from, int count) {
  for (int i = 0; i < count; ++i) {
    Word word;
    std::memcpy(&word, from + i * sizeof(Word), sizeof(Word));
    word = Reverse(word);
    std::memcpy(to + i * sizeof(Word), &word, sizeof(Word));
  }
}

}  // namespace

void omi_SwapperGuts::SwapArray(void* to, void const* from, int count, int elementSize) {
  if (count <= 0) return;
  auto* out = static_cast<unsigned char*>(to);
  auto const* in = static_cast<unsigned char const*>(from);
  switch (elementSize) {
    case 1:
      CopyBytes(to, from, count);
      break;
    case 2:
      SwapWords<std::uint16_t, Swap16>(out, in, count);
      break;
    case 4:
      SwapWords<std::uint32_t, Swap32>(out, in, count);
      break;
    case 8:
      SwapWords<std::uint64_t, Swap64>(out, in, count);
      break;
    default:
      std::abort();
  }
}
