#ifndef cls_AgentMapKey2Obj_h
#define cls_AgentMapKey2Obj_h

class cls_CowValue;
class cls_MementoWrite;
class cls_PC;
class cls_Uid;

// The live back-end of a map from keys of type K (int or cow_String) to
// objects in a database: it stays open behind a container and answers by
// key, each key costing one row read. First/Next/IsDone/Key walk every key
// the agent knows in ascending order, also keys whose object was removed:
// the container asks Present. The container marks the keys it changed
// dirty, and writes a key's object when DoWrite says it is new or dirty.
// One walk at a time per agent.
template <class K>
class cls_AgentMapKey2Obj {
public:
  cls_AgentMapKey2Obj() = default;
  cls_AgentMapKey2Obj(cls_AgentMapKey2Obj const&) = delete;
  cls_AgentMapKey2Obj& operator=(cls_AgentMapKey2Obj const&) = delete;
  virtual ~cls_AgentMapKey2Obj() = default;

  // Takes in what a writer flushed since; 0 when nothing changed.
  virtual int Snap() = 0;
  virtual int Flush() = 0;
  virtual void First() = 0;
  virtual void Next() = 0;
  virtual bool IsDone() const = 0;
  virtual K const& Key() const = 0;
  // The object of key, which must be of class cid or derive from it; an
  // empty value for a removed key. Ask Present first: a key the agent does
  // not know reads whatever row its null entry names.
  virtual cls_CowValue const& Get(K const& key, unsigned int cid) = 0;
  virtual bool DoWrite(K const& key) const = 0;
  virtual bool Present(K const& key) const = 0;
  virtual void SetDirty(K const& key) = 0;
  // The memento of the row of key's object: a new entry for a new key, the
  // key's own row for a known one, which must be present.
  virtual cls_MementoWrite* MakeWriteObj(K const& key, unsigned int cid, cls_Uid const& uid,
                                         cls_CowValue const* cow) = 0;
  virtual cls_MementoWrite* MakeWriteObjWithPtr(K const& key, unsigned int cid, cls_Uid const& uid,
                                                void const* ptr) = 0;
  // The key's entry stays, as a null reference that Present denies.
  virtual void Remove(K const& key) = 0;
  virtual void RefCountInc() = 0;
  virtual void RefCountDec() = 0;
  virtual int GetRefCount() const = 0;
  // Lets go of every object the transporter has cached, not only this
  // map's.
  virtual void Release() const = 0;
  virtual bool ReadOnly() const = 0;
  virtual void RegisterPC(cls_PC* container) const = 0;
};

#endif
