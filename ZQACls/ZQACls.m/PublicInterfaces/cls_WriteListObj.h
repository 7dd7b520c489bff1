#ifndef cls_WriteListObj_h
#define cls_WriteListObj_h

class cls_CowValue;
class cls_MementoWrite;
class cls_Uid;

// One pass that pours a whole list of objects into its store, which starts
// empty, one element after the other: what a write memento's
// MakeWriteListObj answers. Each MakeWrite... appends an element that refers
// to the object's row and answers the memento of that row, or null when the
// object is stored already (its copy-on-write value, or, within a
// shared-pointer output, its address) or its class has no table. The
// receiver deletes the writer when NeedsDeletion() says so.
class cls_WriteListObj {
public:
  cls_WriteListObj() = default;
  cls_WriteListObj(cls_WriteListObj const&) = delete;
  cls_WriteListObj& operator=(cls_WriteListObj const&) = delete;
  virtual ~cls_WriteListObj() = default;

  virtual bool NeedsDeletion() const { return true; }
  virtual cls_MementoWrite* MakeWriteObj(unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) = 0;
  virtual cls_MementoWrite* MakeWriteObjWithPtr(unsigned int cid, cls_Uid const& uid, void const* ptr) = 0;
  // Appends a null element.
  virtual void MakeNullObj(unsigned int cid) = 0;
};

#endif
