#ifndef omi_Swapper_h
#define omi_Swapper_h

#include "ZQABasExport.h"

#include <cstdint>
#include <cstring>

// Byte orders a stored number can have.
enum omi_EndType {
  omi_BigEndian = 0,
  omi_LittleEndian = 1,  // the order of every database file
};

// Tells whether numbers of the given byte order must be swapped on this host.
class ZQA_EXPORT omi_Swapper {
public:
  explicit omi_Swapper(int endType) : m_Swap(endType != HostEndType()) {}

  bool Swap() const { return m_Swap; }
  static int HostEndType() {
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? omi_LittleEndian : omi_BigEndian;
  }

private:
  bool m_Swap;
};

// Moves arrays between memory and stored form. Internalize and Externalize
// both reverse the bytes of every element; they are named for the direction
// so that call sites read as what they mean. Source and destination may be
// the same array but must not otherwise overlap.
class ZQA_EXPORT omi_SwapperGuts {
public:
  static std::uint16_t Swap16(std::uint16_t v) { return __builtin_bswap16(v); }
  static std::uint32_t Swap32(std::uint32_t v) { return __builtin_bswap32(v); }
  static std::uint64_t Swap64(std::uint64_t v) { return __builtin_bswap64(v); }

  static void InternalizeArray(void* to, void const* from, int count, int elementSize) {
    SwapArray(to, from, count, elementSize);
  }
  static void ExternalizeArray(void* to, void const* from, int count, int elementSize) {
    SwapArray(to, from, count, elementSize);
  }
  static void CopyBytes(void* to, void const* from, int byteCount) {
    if (byteCount > 0 && to != from) std::memmove(to, from, static_cast<std::size_t>(byteCount));
  }

  // Reverses the bytes of each element; elementSize is 1, 2, 4 or 8.
  static void SwapArray(void* to, void const* from, int count, int elementSize);
};

#endif
