#include "utl_BinStreamException.h"

#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cstring>

namespace {
char const kEndText[] = "Unexpected end of the input on descriptor %d";
char const kReadErrorText[] = "Cannot read from descriptor %d: %s";
char const kWriteErrorText[] = "Cannot write to descriptor %d: %s";
}  // namespace

utl_BinStreamEOF::utl_BinStreamEOF(int descriptor)
    : utl_BinStreamException(descriptor, 0, atr_SubstituteFormat(atr_translate(kEndText), descriptor)) {}

utl_BinStreamReadError::utl_BinStreamReadError(int descriptor, int errorCode)
    : utl_BinStreamException(
          descriptor, errorCode,
          atr_SubstituteFormat(atr_translate(kReadErrorText), descriptor, std::strerror(errorCode))) {}

utl_BinStreamWriteError::utl_BinStreamWriteError(int descriptor, int errorCode)
    : utl_BinStreamException(
          descriptor, errorCode,
          atr_SubstituteFormat(atr_translate(kWriteErrorText), descriptor, std::strerror(errorCode))) {}
