#ifndef utl_BinIStream_h
#define utl_BinIStream_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "omi_Swapper.h"

// Numbers and bytes read from a descriptor in the byte order of an
// omi_EndType, through a buffer; the counterpart of utl_BinOStream, with
// the same sizes and String form. A read takes exactly the bytes it asks
// for or raises: utl_BinStreamEOF when the input ends first (the bytes that
// did come are consumed), utl_BinStreamReadError when the system fails.
// A read waits only for the bytes it needs: the buffer is filled with what
// the descriptor has at hand, never by waiting for more.
//
// Invariant: 0 <= m_Begin <= m_End <= kBufferSize; m_Buffer[m_Begin,
// m_End) holds the bytes received and not yet read, in order.
class ZQA_EXPORT utl_BinIStream {
public:
  static constexpr int kBufferSize = 4096;

  // The descriptor stays the caller's to close. endType is omi_BigEndian
  // or omi_LittleEndian.
  utl_BinIStream(int descriptor, int endType);
  utl_BinIStream(utl_BinIStream const&) = delete;
  utl_BinIStream& operator=(utl_BinIStream const&) = delete;

  int Descriptor() const noexcept { return m_Descriptor; }

  signed char ReadSchar();
  unsigned char ReadUchar();
  short ReadShort();
  int ReadInt();
  unsigned int ReadUInt();
  long long ReadInt64();
  unsigned long long ReadUInt64();
  // The bytes come as they arrive, so a damaged length cannot make the
  // string reserve more memory than the input really holds.
  cow_String ReadString();
  void Read(char* bytes, int count);

private:
  template <class Unsigned>
  Unsigned ReadNumber();
  // One read(2) of at most count bytes into bytes; raises at the end of the
  // input or on an error, so the answer is above 0.
  int Receive(char* bytes, int count);

  int m_Descriptor;
  omi_Swapper m_Swapper;
  int m_Begin = 0;
  int m_End = 0;
  char m_Buffer[kBufferSize];
};

#endif
