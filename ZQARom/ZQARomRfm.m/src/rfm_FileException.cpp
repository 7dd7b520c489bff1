#include "rfm_FileException.h"

#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

rfm_FileNoSuchFile::rfm_FileNoSuchFile(cow_String const& name)
    : rfm_FileException(atr_SubstituteFormat(atr_translate("*** ERROR: No such file: %s."), name)) {}

rfm_FileNotReadable::rfm_FileNotReadable(cow_String const& name)
    : rfm_FileException(atr_SubstituteFormat(atr_translate("*** ERROR: No permission to read: %s."), name)) {}

rfm_FileReadOnlyExc::rfm_FileReadOnlyExc(cow_String const& name)
    : rfm_FileException(
          atr_SubstituteFormat(atr_translate("*** ERROR: Attempt to write to read-only file:\n  %s"), name)) {}

rfm_FileBadParameterExc::rfm_FileBadParameterExc(cow_String const& method)
    : rfm_FileException(
          atr_SubstituteFormat(atr_translate("*** ERROR: Bad parameter passed to file method: %s."), method)) {}

rfm_FileConnectExc::rfm_FileConnectExc(cow_String const& name, cow_String const& reason)
    : rfm_FileException(atr_SubstituteFormat(
          atr_translate("*** ERROR: Can't connect to remote file:\n%s, reason:\n%s"), name, reason)) {}

rfm_FileFailExc::rfm_FileFailExc(cow_String const& name, cow_String const& reason)
    : rfm_FileException(atr_SubstituteFormat(
          atr_translate("*** ERROR: Lost connection to remote file:\n%s, reason:\n%s"), name, reason)) {}

rfm_FileCacheExc::rfm_FileCacheExc()
    : rfm_FileException(atr_translate("*** ERROR: Insufficient space in for network ZDB local cache.")) {}
