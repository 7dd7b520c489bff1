#ifndef cls_StorageTypeId_h
#define cls_StorageTypeId_h

#include "ZQABasExport.h"

// Process-wide ids of storage kinds: each call answers a new id, from 1 up;
// 0 is never answered and means "not yet allocated". Safe from any thread.
class ZQA_EXPORT cls_StorageTypeId {
public:
  static int AllocateId();
};

#endif
