#ifndef cls_WriteMapKey2Obj_h
#define cls_WriteMapKey2Obj_h

#include "cow_String.h"

class cls_CowValue;
class cls_MementoWrite;
class cls_Uid;

// One pass that pours a whole map from keys of type K to objects into its
// store, which starts empty: what a write memento's MakeWriteMap...2Obj
// answers. Each MakeWrite... appends an entry for key that refers to the
// object's row and answers the memento of that row, or null when the object
// is stored already or its class has no table. The writer does not look for
// repeated keys: a reader takes the first live entry of a key. The receiver
// deletes the writer when NeedsDeletion() says so.
template <class K>
class cls_WriteMapKey2Obj {
public:
  cls_WriteMapKey2Obj() = default;
  cls_WriteMapKey2Obj(cls_WriteMapKey2Obj const&) = delete;
  cls_WriteMapKey2Obj& operator=(cls_WriteMapKey2Obj const&) = delete;
  virtual ~cls_WriteMapKey2Obj() = default;

  virtual bool NeedsDeletion() const { return true; }
  virtual cls_MementoWrite* MakeWriteObj(K const& key, unsigned int cid, cls_Uid const& uid,
                                         cls_CowValue const* cow) = 0;
  virtual cls_MementoWrite* MakeWriteObjWithPtr(K const& key, unsigned int cid, cls_Uid const& uid,
                                                void const* ptr) = 0;
  // Appends an entry for key with a null object.
  virtual void MakeNullObj(K const& key, unsigned int cid) = 0;
};

using cls_WriteMapInt2Obj = cls_WriteMapKey2Obj<int>;
using cls_WriteMapString2Obj = cls_WriteMapKey2Obj<cow_String>;

#endif
