#ifndef cls_ReadMapKey2Obj_h
#define cls_ReadMapKey2Obj_h

#include "cow_String.h"

class cls_CowValue;
class cls_MementoRead;

// One pass over a stored map from keys of type K to objects, in the order
// its entries were written (not in key order): what a read memento's
// MakeReadMap...2Obj answers. Next() steps to the next entry; ReadKey and
// the Read... operations then answer its key and build (or find) its object
// as the class stored with it, which must be cid or derive from it. A null
// entry reads as an empty value. The receiver deletes the reader when
// NeedsDeletion() says so.
template <class K>
class cls_ReadMapKey2Obj {
public:
  cls_ReadMapKey2Obj() = default;
  cls_ReadMapKey2Obj(cls_ReadMapKey2Obj const&) = delete;
  cls_ReadMapKey2Obj& operator=(cls_ReadMapKey2Obj const&) = delete;
  virtual ~cls_ReadMapKey2Obj() = default;

  virtual bool NeedsDeletion() const { return true; }
  // The number of stored entries, a key's repeats and removals included.
  virtual int Size() = 0;
  // False past the last entry.
  virtual bool Next() = 0;
  virtual K const& ReadKey() = 0;
  virtual cls_CowValue const& ReadObjCow(unsigned int cid) = 0;
  // The memento of the current entry's row, for a caller that builds the
  // object in place; null for a null entry.
  virtual cls_MementoRead* MakeReadObj() = 0;
};

// An int-keyed map's reader can build its objects by pointer too: a new
// object the caller owns, null for a null entry.
class cls_ReadMapInt2Obj : public cls_ReadMapKey2Obj<int> {
public:
  virtual void* ReadObjPtr(unsigned int cid) = 0;
};

using cls_ReadMapString2Obj = cls_ReadMapKey2Obj<cow_String>;

#endif
