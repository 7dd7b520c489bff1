#ifndef cls_CollectionType_h
#define cls_CollectionType_h

#include "ZQABasExport.h"

// Which kind of collection implements a member: what a class declares for an
// attribute, and what the code that stores the member implements. Stored in
// class metadata: the values never change.
enum cls_CollectionType {
  cls_CollNone = 0,
  cls_CollListPrim = 1,  // a list of values
  cls_CollListObj = 2,  // a list of objects
  cls_CollMapInt2Obj = 3,
  cls_CollMapString2Obj = 4,
  cls_CollMapInt2Prim = 5,
  cls_CollMapString2Prim = 6,
  cls_CollIntTableInt = 7,
  cls_CollBlob = 8,
  cls_CollAny = 9,  // declared: any collection will do
};

// Whether the collection implemented for a member agrees with the one its
// attribute declares: the same kind, or a declaration that accepts any.
ZQA_EXPORT bool cls_CollectionsMatch(cls_CollectionType declared, cls_CollectionType implemented);

#endif
