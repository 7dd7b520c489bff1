#include "nex_SystemErrorCode.h"

#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cstring>

nex_SystemErrorCode::nex_SystemErrorCode(int code, cow_String const& path)
    : m_Code(code),
      m_Path(path),
      m_Reason(std::strerror(code)),
      m_Text(atr_SubstituteFormat(atr_translate("%s: %s"), path, m_Reason)) {}
