#ifndef cls_ReadListObj_h
#define cls_ReadListObj_h

class cls_CowValue;
class cls_MementoRead;

// One pass over a stored list of objects, from its first element on: what a
// read memento's MakeReadListObj answers. Next() steps to the next element;
// the Read... operations then build (or find) its object as the class stored
// with it, which must be cid or derive from it. A null element reads as a
// null pointer or an empty value. The receiver deletes the reader when
// NeedsDeletion() says so.
class cls_ReadListObj {
public:
  cls_ReadListObj() = default;
  cls_ReadListObj(cls_ReadListObj const&) = delete;
  cls_ReadListObj& operator=(cls_ReadListObj const&) = delete;
  virtual ~cls_ReadListObj() = default;

  virtual bool NeedsDeletion() const { return true; }
  virtual int Size() = 0;
  virtual int Columns() = 0;
  // False past the last element.
  virtual bool Next() = 0;
  virtual void* ReadObjPtr(unsigned int cid) = 0;
  virtual cls_CowValue const& ReadObjCow(unsigned int cid) = 0;
  // The memento of the current element's row, for a caller that builds the
  // object in place; null for a null element.
  virtual cls_MementoRead* MakeReadObj() = 0;
};

#endif
