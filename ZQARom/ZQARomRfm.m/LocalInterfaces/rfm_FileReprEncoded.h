#ifndef rfm_FileReprEncoded_h
#define rfm_FileReprEncoded_h

#include "cow_String.h"

// The representation of a compressed database file. This build recognises
// such files, so that opening one gives a clear message, but cannot read or
// write them yet.
class rfm_FileReprEncoded {
public:
  // Whether the file begins with the compressed container's magic. Only
  // the magic's first six bytes decide, not its version digits.
  static bool IsEncoded(cow_String const& name);
};

#endif
