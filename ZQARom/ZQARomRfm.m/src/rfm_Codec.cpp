#include "rfm_Codec.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"

void rfm_Codec::RaiseCorrupt(char const* sourcePath, int line) {
  nex_ThrowMessage(sourcePath, line, atr_translate("***ERROR: ZAE database is corrupt."));
}
