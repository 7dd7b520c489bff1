#ifndef rfm_Exc_h
#define rfm_Exc_h

#include "atr_String.h"

// Raises the message that every write path gives on a read-only database.
[[noreturn]] void rfm_IssueWritingToReadOnlyException();

// "text: reason", the reason being the system's text for the current errno.
atr_String rfm_ExcSystemText(char const* text);

#endif
