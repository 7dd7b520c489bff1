#ifndef rfm_HandleConverter_h
#define rfm_HandleConverter_h

#include "omi_Swapper.h"
#include "rfm_Handle.h"

// How a handle is stored: a 32-bit integer in the file's byte order
// followed by four zero bytes, 8 bytes in all. Reading looks at the first
// four bytes only.
class rfm_HandleConverter {
public:
  static constexpr int ExternalSize() { return 8; }
  static rfm_Handle Internalize(omi_Swapper swapper, char const* source);
  static void Externalize(omi_Swapper swapper, char* target, rfm_Handle value);
};

#endif
