#ifndef cls_AgentProxy_h
#define cls_AgentProxy_h

#include "cls_CowValue.h"
#include "cls_Uid.h"

class cls_FieldHandle;
class cls_MementoWrite;
class cls_PC;

// One stored object that has not been loaded: a lazily held reference, what
// a read memento's MakeAgentProxy answers for an object member. Nothing of
// the object is read until Load. The receiver owns the proxy; it must not
// outlive its database, which tells the container registered with
// RegisterPC when it goes.
class cls_AgentProxy {
public:
  cls_AgentProxy() = default;
  cls_AgentProxy(cls_AgentProxy const&) = delete;
  cls_AgentProxy& operator=(cls_AgentProxy const&) = delete;
  virtual ~cls_AgentProxy() = default;

  // False for a null reference.
  virtual bool HasValue() const = 0;
  // Whether the object is in memory already (a null reference always is).
  virtual bool IsLoaded() const = 0;
  // The object, read the first time and found in the database's cache
  // after; an empty value for a null reference.
  virtual cls_CowValue Load() const = 0;
  // The object's identity, without loading it: the database keeps it for as
  // long as it is open.
  virtual cls_Uid GetUid() const = 0;
  // Writes the reference into field of memento, a memento of the storage
  // kind storageType, without loading the object: a memento of another
  // database gets a copy of the object's rows (once), and the proxy then
  // stands for the copy. False when the proxy cannot write into that kind
  // of storage; the caller then loads the object and writes it.
  virtual bool Transfer(int storageType, cls_MementoWrite* memento, cls_FieldHandle const& field) = 0;
  virtual void RegisterPC(cls_PC* container) const = 0;
};

#endif
