#ifndef cls_AgentListObj_h
#define cls_AgentListObj_h

class cls_CowValue;
class cls_MementoWrite;
class cls_PC;
class cls_Uid;

// The live back-end of a container of objects in a database. Elements are
// read by index; the container marks the ones it changed dirty, and writes
// an element when DoWrite says it is new or dirty. The container that holds
// the agent decides when to delete it.
class cls_AgentListObj {
public:
  cls_AgentListObj() = default;
  cls_AgentListObj(cls_AgentListObj const&) = delete;
  cls_AgentListObj& operator=(cls_AgentListObj const&) = delete;
  virtual ~cls_AgentListObj() = default;

  virtual int Size() = 0;
  // The object of element index, which must be of class cid or derive from
  // it; an empty value for a null element.
  virtual cls_CowValue const& Get(int index, unsigned int cid) = 0;
  virtual int Snap() = 0;
  virtual int Flush() = 0;
  virtual bool DoWrite(int index) = 0;
  virtual void SetDirty(int index) = 0;
  // The memento of the row of element index's object; index at or past the
  // end appends an element.
  virtual cls_MementoWrite* MakeWriteObj(int index, unsigned int cid, cls_Uid const& uid,
                                         cls_CowValue const* cow) = 0;
  virtual cls_MementoWrite* MakeWriteObjWithPtr(int index, unsigned int cid, cls_Uid const& uid,
                                                void const* ptr) = 0;
  virtual void RefCountInc() = 0;
  virtual void RefCountDec() = 0;
  virtual int GetRefCount() const = 0;
  // Lets go of every object the transporter has cached, not only this
  // list's.
  virtual void Release() const = 0;
  virtual bool ReadOnly() const = 0;
  virtual void RegisterPC(cls_PC* container) const = 0;
};

#endif
