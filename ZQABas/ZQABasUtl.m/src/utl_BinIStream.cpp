#include "utl_BinIStream.h"

#include "ZQABasAssert.h"
#include "utl_BinStreamException.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <unistd.h>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/utl_BinIStream";

// ReadString takes a long string in pieces of this size.
constexpr int kStringPiece = 65536;

}  // namespace

utl_BinIStream::utl_BinIStream(int descriptor, int endType) : m_Descriptor(descriptor), m_Swapper(endType) {
  ZQA_ASSERT(kSourcePath, endType == omi_BigEndian || endType == omi_LittleEndian);
}

signed char utl_BinIStream::ReadSchar() { return static_cast<signed char>(ReadNumber<std::uint8_t>()); }
unsigned char utl_BinIStream::ReadUchar() { return ReadNumber<std::uint8_t>(); }
short utl_BinIStream::ReadShort() { return static_cast<short>(ReadNumber<std::uint16_t>()); }
int utl_BinIStream::ReadInt() { return static_cast<int>(ReadNumber<std::uint32_t>()); }
unsigned int utl_BinIStream::ReadUInt() { return ReadNumber<std::uint32_t>(); }
long long utl_BinIStream::ReadInt64() { return static_cast<long long>(ReadNumber<std::uint64_t>()); }
unsigned long long utl_BinIStream::ReadUInt64() { return ReadNumber<std::uint64_t>(); }

cow_String utl_BinIStream::ReadString() {
  int length = ReadInt();
  if (length < 0) utl_BinStreamReadError(m_Descriptor, EBADMSG).Throw(kSourcePath, __LINE__);
  std::string text;
  while (static_cast<int>(text.size()) < length) {
    std::size_t done = text.size();
    int piece = std::min(kStringPiece, length - static_cast<int>(done));
    text.resize(done + static_cast<std::size_t>(piece));
    Read(&text[done], piece);
  }
  return cow_String(text.data(), length);
}

template <class Unsigned>
Unsigned utl_BinIStream::ReadNumber() {
  char bytes[sizeof(Unsigned)];
  Read(bytes, sizeof bytes);
  if (m_Swapper.Swap()) omi_SwapperGuts::SwapArray(bytes, bytes, 1, sizeof bytes);
  Unsigned bits;
  std::memcpy(&bits, bytes, sizeof bits);
  return bits;
}

void utl_BinIStream::Read(char* bytes, int count) {
  ZQA_ASSERT(kSourcePath, count >= 0);
  for (;;) {
    int held = std::min(count, m_End - m_Begin);
    omi_SwapperGuts::CopyBytes(bytes, m_Buffer + m_Begin, held);
    m_Begin += held;
    bytes += held;
    count -= held;
    if (count == 0) return;
    if (count >= kBufferSize) {
      // Large reads go straight to the caller's memory.
      while (count > 0) {
        int received = Receive(bytes, count);
        bytes += received;
        count -= received;
      }
      return;
    }
    // Emptied first, so that a failed receive leaves no stale bytes behind.
    m_Begin = m_End = 0;
    m_End = Receive(m_Buffer, kBufferSize);
  }
}

int utl_BinIStream::Receive(char* bytes, int count) {
  ssize_t received;
  do {
    received = ::read(m_Descriptor, bytes, static_cast<std::size_t>(count));
  } while (received < 0 && errno == EINTR);
  if (received < 0) utl_BinStreamReadError(m_Descriptor, errno).Throw(kSourcePath, __LINE__);
  if (received == 0) utl_BinStreamEOF(m_Descriptor).Throw(kSourcePath, __LINE__);
  return static_cast<int>(received);
}
