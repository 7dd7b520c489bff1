#include "rfm_Exc.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cerrno>
#include <cstring>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_Exc";
}

void rfm_IssueWritingToReadOnlyException() {
  nex_ThrowMessage(kSourcePath, __LINE__,
                   atr_translate("The output database was opened as read-only. Modification of data is not permitted."));
}

atr_String rfm_ExcSystemText(char const* text) {
  int error = errno;
  return atr_SubstituteFormat(atr_translate("%s: %s"), text, std::strerror(error));
}
