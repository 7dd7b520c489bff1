#ifndef nex_SystemErrorCode_h
#define nex_SystemErrorCode_h

#include "ZQABasExport.h"
#include "atr_String.h"
#include "cow_String.h"

// A failed system call on a path: the errno value and the texts made from it
// at construction. Text() names the path and gives the system's reason, so a
// nex_PrimException<nex_SystemErrorCode, 1> explains itself through what().
// Invariant: Text() is Path() + ": " + Reason(), translated, for the code
// held; a default value holds code 0 and empty texts.
class ZQA_EXPORT nex_SystemErrorCode {
public:
  nex_SystemErrorCode() = default;
  nex_SystemErrorCode(int code, cow_String const& path);

  int Code() const noexcept { return m_Code; }
  cow_String const& Path() const noexcept { return m_Path; }
  // The system's description of the code alone, without the path.
  atr_String const& Reason() const noexcept { return m_Reason; }
  // The full message: the path and the reason.
  atr_String const& Text() const noexcept { return m_Text; }

private:
  int m_Code = 0;
  cow_String m_Path;
  atr_String m_Reason;
  atr_String m_Text;
};

// The text that nex_PrimException<nex_SystemErrorCode, N>::what() answers.
inline char const* nex_ExceptionText(nex_SystemErrorCode const& error) noexcept { return error.Text().CStr(); }

#endif
