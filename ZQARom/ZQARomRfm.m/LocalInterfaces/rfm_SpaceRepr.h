#ifndef rfm_SpaceRepr_h
#define rfm_SpaceRepr_h

#include "rfm_Handle.h"
#include "rfm_IOS.h"

// A space: a growable byte sequence inside a database, named by a handle.
// Tables, arrays, tagged streams, the string pool and the metadata are all
// spaces with a format of their own on top.
class rfm_SpaceRepr : public rfm_IOS {
public:
  virtual rfm_Handle Handle() const = 0;
  // Bytes reserved for the space, at least its length.
  virtual utl_FileOffset Allocation() const = 0;
  // Cuts the space to length bytes, keeping its allocation for reuse.
  virtual void Truncate(utl_FileOffset length) = 0;
};

#endif
