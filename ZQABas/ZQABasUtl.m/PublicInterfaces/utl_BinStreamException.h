#ifndef utl_BinStreamException_h
#define utl_BinStreamException_h

#include "ZQABasException.h"
#include "atr_String.h"

// The failures of utl_BinIStream and utl_BinOStream. Catching the base
// catches every way a conversation over a descriptor can break; what()
// names the descriptor and, for a system error, the system's reason.
//
// Invariant: ErrorCode() is the errno value of the failed call, 0 for the
// end of the input; Text() is fixed at construction.
class ZQA_EXPORT utl_BinStreamException : public ZQABasException {
public:
  int Descriptor() const noexcept { return m_Descriptor; }
  int ErrorCode() const noexcept { return m_ErrorCode; }
  atr_String const& Text() const noexcept { return m_Text; }
  char const* what() const noexcept override { return m_Text.CStr(); }

protected:
  utl_BinStreamException(int descriptor, int errorCode, atr_String const& text)
      : m_Descriptor(descriptor), m_ErrorCode(errorCode), m_Text(text) {}

private:
  int m_Descriptor;
  int m_ErrorCode;
  atr_String m_Text;
};

// The input ended before all the bytes a read asked for had come: the
// writer closed its end or ended.
class ZQA_EXPORT utl_BinStreamEOF : public utl_BinStreamException {
public:
  explicit utl_BinStreamEOF(int descriptor);
  [[noreturn]] void Propagate() const override { throw *this; }
};

// A read failed in the system, or the input held a value no writer makes
// (a negative string length: EBADMSG).
class ZQA_EXPORT utl_BinStreamReadError : public utl_BinStreamException {
public:
  utl_BinStreamReadError(int descriptor, int errorCode);
  [[noreturn]] void Propagate() const override { throw *this; }
};

// A write failed in the system; EPIPE when the reader has gone.
class ZQA_EXPORT utl_BinStreamWriteError : public utl_BinStreamException {
public:
  utl_BinStreamWriteError(int descriptor, int errorCode);
  [[noreturn]] void Propagate() const override { throw *this; }
};

#endif
