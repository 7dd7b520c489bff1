#include "rfmT_PageDigest.h"

#include <cstring>

namespace {

// Odd 64-bit constants with well-mixed bits; odd, so that multiplying by
// them is one-to-one.
constexpr std::uint64_t kPrime1 = 0x9E3779B185EBCA87ull;
constexpr std::uint64_t kPrime2 = 0xC2B2AE3D27D4EB4Full;
constexpr std::uint64_t kPrime3 = 0x165667B19E3779F9ull;

// Four lanes take turns with the words, so four steps run at once.
constexpr int kLanes = 4;

std::uint64_t RotateLeft(std::uint64_t value, int bits) { return (value << bits) | (value >> (64 - bits)); }

std::uint64_t Step(std::uint64_t lane, std::uint64_t word) { return RotateLeft(lane + word * kPrime2, 31) * kPrime1; }

std::uint64_t Word(char const* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

}  // namespace

// Each step, and the joining of the lanes, is one-to-one in the value it
// changes with the others held, which is what makes a single changed word
// always show.
std::uint64_t rfmT_PageDigest(char const* bytes, int length) {
  std::uint64_t lanes[kLanes] = {kPrime1, kPrime2, kPrime3, kPrime1 ^ kPrime2};
  int offset = 0;
  for (; offset + kLanes * 8 <= length; offset += kLanes * 8) {
    for (int lane = 0; lane < kLanes; ++lane) lanes[lane] = Step(lanes[lane], Word(bytes + offset + 8 * lane));
  }
  for (int lane = 0; offset < length; offset += 8, ++lane) {
    std::uint64_t tail = 0;
    std::memcpy(&tail, bytes + offset, static_cast<std::size_t>(length - offset < 8 ? length - offset : 8));
    lanes[lane] = Step(lanes[lane], tail);
  }
  std::uint64_t digest = static_cast<std::uint64_t>(length) * kPrime3;
  for (int lane = 0; lane < kLanes; ++lane) digest += RotateLeft(lanes[lane], 1 + 11 * lane);
  digest ^= digest >> 33;
  digest *= kPrime2;
  digest ^= digest >> 29;
  digest *= kPrime3;
  digest ^= digest >> 32;
  return digest;
}
