#ifndef cls_AgentRequest_h
#define cls_AgentRequest_h

#include "cls_AgentMapKey2Obj.h"
#include "cls_WriteMapKey2Obj.h"

class cls_CowValue;
class cls_MementoWrite;
class cls_Uid;

// Where a cls_WriteVisitor for one element of a collection gets the
// element's row: the collection's writer or agent, and the element's place
// in it. A request lives as long as the visitor built on it.
class cls_AgentRequest {
public:
  virtual ~cls_AgentRequest() = default;
  virtual cls_MementoWrite* MakeWriteObj(unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) const = 0;
  virtual cls_MementoWrite* MakeWriteObjWithPtr(unsigned int cid, cls_Uid const& uid, void const* ptr) const = 0;
};

// The entry for key appended by a map's writer.
template <class K>
class cls_WriteRequestMapKey2Obj : public cls_AgentRequest {
public:
  cls_WriteRequestMapKey2Obj(cls_WriteMapKey2Obj<K>& map, K const& key) : m_Map(&map), m_Key(key) {}
  cls_MementoWrite* MakeWriteObj(unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) const override {
    return m_Map->MakeWriteObj(m_Key, cid, uid, cow);
  }
  cls_MementoWrite* MakeWriteObjWithPtr(unsigned int cid, cls_Uid const& uid, void const* ptr) const override {
    return m_Map->MakeWriteObjWithPtr(m_Key, cid, uid, ptr);
  }

private:
  cls_WriteMapKey2Obj<K>* m_Map;
  K m_Key;
};

using cls_WriteRequestMapInt2Obj = cls_WriteRequestMapKey2Obj<int>;
using cls_WriteRequestMapString2Obj = cls_WriteRequestMapKey2Obj<cow_String>;

// The entry of key in a map's agent: new, or written over in place.
template <class K>
class cls_WriteRequestAgentMap : public cls_AgentRequest {
public:
  cls_WriteRequestAgentMap(cls_AgentMapKey2Obj<K>& agent, K const& key) : m_Agent(&agent), m_Key(key) {}
  cls_MementoWrite* MakeWriteObj(unsigned int cid, cls_Uid const& uid, cls_CowValue const* cow) const override {
    return m_Agent->MakeWriteObj(m_Key, cid, uid, cow);
  }
  cls_MementoWrite* MakeWriteObjWithPtr(unsigned int cid, cls_Uid const& uid, void const* ptr) const override {
    return m_Agent->MakeWriteObjWithPtr(m_Key, cid, uid, ptr);
  }

private:
  cls_AgentMapKey2Obj<K>* m_Agent;
  K m_Key;
};

#endif
