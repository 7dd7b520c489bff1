#ifndef utl_BinOStream_h
#define utl_BinOStream_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "omi_Swapper.h"

// Numbers and bytes written to a descriptor (a pipe, typically) in the
// byte order of an omi_EndType, through a buffer. Each number takes exactly
// its size: Schar and Uchar 1 byte, Short 2, Int and UInt 4, Int64 and
// UInt64 8. A String is its length as an Int followed by its bytes.
//
// Bytes reach the descriptor only when the buffer fills or on Flush: a
// writer that is about to wait for an answer flushes its request first.
// The destructor flushes what is left and drops a failure, as there is
// nobody left to tell; the peer then meets the end of its input.
//
// A write never raises SIGPIPE: a reader that has gone gives
// utl_BinStreamWriteError with EPIPE, as any other failed write does. The
// unsent bytes are dropped then.
//
// Invariant: 0 <= m_Used <= kBufferSize; m_Buffer[0, m_Used) holds the
// bytes written and not yet sent, in order.
class ZQA_EXPORT utl_BinOStream {
public:
  static constexpr int kBufferSize = 4096;

  // The descriptor stays the caller's to close. endType is omi_BigEndian
  // or omi_LittleEndian.
  utl_BinOStream(int descriptor, int endType);
  ~utl_BinOStream();
  utl_BinOStream(utl_BinOStream const&) = delete;
  utl_BinOStream& operator=(utl_BinOStream const&) = delete;

  int Descriptor() const noexcept { return m_Descriptor; }

  void WriteSchar(signed char value);
  void WriteUchar(unsigned char value);
  void WriteShort(short value);
  void WriteInt(int value);
  void WriteUInt(unsigned int value);
  void WriteInt64(long long value);
  void WriteUInt64(unsigned long long value);
  void WriteString(cow_String const& value);
  void Write(char const* bytes, int count);

  void Flush();

private:
  template <class Unsigned>
  void WriteNumber(Unsigned bits);
  void Send(char const* bytes, int count);

  int m_Descriptor;
  omi_Swapper m_Swapper;
  int m_Used = 0;
  char m_Buffer[kBufferSize];
};

#endif
