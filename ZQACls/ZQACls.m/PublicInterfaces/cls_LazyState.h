#ifndef cls_LazyState_h
#define cls_LazyState_h

#include "ZQABasExport.h"
#include "cls_AgentProxy.h"
#include "cls_CowValue.h"
#include "cls_PC.h"
#include "cls_Uid.h"

#include <memory>

// What the copies of one lazily held member share (cls_Lazy<U>), apart from
// the typed value: the proxy of the stored object, and the object's
// identity once known. It is registered with the proxy's database, and lets
// the proxy go when that database closes; after that only what was loaded
// or asked for before is known.
//
// Invariant: a state made from a value in memory is loaded and never has a
// proxy; a state made from a proxy holds it from construction until its
// database disconnects it, and is in that database's ring meanwhile.
class ZQA_EXPORT cls_LazyState : public cls_PC {
public:
  // An object in memory: loaded, with no database behind it.
  cls_LazyState();
  // The stored object proxy stands for, proxy having a value; the object's
  // class is classId (for messages).
  cls_LazyState(std::unique_ptr<cls_AgentProxy> proxy, unsigned int classId);
  ~cls_LazyState() override;

  // Whether the value has been taken in (see MarkLoaded).
  bool Loaded() const { return m_Loaded; }
  // Loaded, or the database holds the object in memory already.
  bool IsLoaded() const;
  // The object, read through the proxy; raises when the database closed
  // before the object was loaded.
  cls_CowValue Load() const;
  // The value from Load has been taken in: from now on the state needs no
  // database.
  void MarkLoaded();
  // The stored object's identity; null for an object given in memory.
  // Raises when the database closed before the identity was known.
  cls_Uid const& Uid() const;
  // Null from a value in memory, and once the database has closed.
  cls_AgentProxy* Proxy() const { return m_Proxy.get(); }

  // The database is closing: the proxy goes with it.
  void Disconnect() override;

private:
  [[noreturn]] void RaiseClosed(char const* message) const;

  std::unique_ptr<cls_AgentProxy> m_Proxy;
  unsigned int m_ClassId;
  // Made from a proxy, not from a value in memory.
  bool m_Stored;
  bool m_Loaded;
  mutable cls_Uid m_Uid;
};

#endif
