#ifndef cls_MementoRead_h
#define cls_MementoRead_h

#include "ZQABasExport.h"

class cls_AgentBlob;
class cls_AgentListObj;
class cls_AgentProxy;
class cls_CowValue;
class cls_FieldHandle;
class cls_ReadIntTableInt;
class cls_ReadListObj;
class cls_ReadMapInt2Obj;
class cls_Uid;
class cow_String;
template <class T>
class cls_AgentListPrim;
template <class K>
class cls_AgentMapKey2Obj;
template <class T>
class cls_ReadListPrim;
template <class K>
class cls_ReadMapKey2Obj;
template <class K, class T>
class cls_ReadMapKey2Prim;

// One row being read: what a cls_ReadVisitor pulls an object's members out
// of. The object layer implements it on its tables; the framework knows only
// this interface.
//
// Read(field, T const&) answers the field's value; the second argument only
// chooses the type. The Make... operations answer the memento of another row
// (an object member, the base class part), or null for a null reference or
// a class without a table. Whoever receives a memento deletes it when
// NeedsDeletion() says so; the visitors do.
//
// A collection (a list, a map, a blob) is read through the memento of its own row
// (MakeReadObj on the member that refers to it). The Make... operations for
// collections answer its reader or agent, or null when the row holds no
// collection; a memento that reads no collections answers null too. The
// MakeAlt... operations answer the second collection of a double
// collection's row.
class ZQA_EXPORT cls_MementoRead {
public:
  cls_MementoRead(cls_MementoRead const&) = delete;
  cls_MementoRead& operator=(cls_MementoRead const&) = delete;
  virtual ~cls_MementoRead();

  // Whether the visitor that receives this memento owns it.
  bool NeedsDeletion() const { return m_Ownership == kOwnedByVisitor; }

  // Identifies the database the row is in.
  virtual void const* DbId() const = 0;
  // The identity of the object on this row.
  virtual cls_Uid const& GetUid() const = 0;
  // Whether the row's table has the field, and whether the row holds data in
  // it; a reference is present when both of its columns hold data.
  virtual bool FieldIsPresent(cls_FieldHandle const& field) const = 0;
  virtual bool DataIsPresent(cls_FieldHandle const& field) const = 0;
  virtual bool ObjIsPresent(cls_FieldHandle const& field) const = 0;
  virtual cls_MementoRead* MakeReadObj(cls_FieldHandle const& field) = 0;
  virtual cls_MementoRead* MakeBaseReadObj() = 0;

  virtual bool Read(cls_FieldHandle const& field, bool const& type) = 0;
  virtual char Read(cls_FieldHandle const& field, char const& type) = 0;
  virtual unsigned char Read(cls_FieldHandle const& field, unsigned char const& type) = 0;
  virtual short Read(cls_FieldHandle const& field, short const& type) = 0;
  virtual unsigned short Read(cls_FieldHandle const& field, unsigned short const& type) = 0;
  virtual int Read(cls_FieldHandle const& field, int const& type) = 0;
  virtual unsigned int Read(cls_FieldHandle const& field, unsigned int const& type) = 0;
  virtual float Read(cls_FieldHandle const& field, float const& type) = 0;
  virtual double Read(cls_FieldHandle const& field, double const& type) = 0;
  virtual cow_String Read(cls_FieldHandle const& field, cow_String const& type) = 0;
  virtual int ReadEnumAsInt(cls_FieldHandle const& field) = 0;

  // The object that field refers to, built (or found) as the class stored in
  // the row, which is cid or derives from it: a new object the caller owns
  // (null for a null reference), or a shared value (empty for a null one).
  virtual void* ReadObjPtr(cls_FieldHandle const& field, unsigned int cid) = 0;
  virtual cls_CowValue const& ReadObjCow(cls_FieldHandle const& field, unsigned int cid) = 0;

  // The memento of the collection row that field refers to, which must be
  // of class collectionClass (cls_CollectionClass.h); null for a null
  // reference. Here: MakeReadObj, which checks no class.
  virtual cls_MementoRead* MakeReadCollection(cls_FieldHandle const& field, unsigned int collectionClass);
  virtual cls_ReadListObj* MakeReadListObj();
  virtual cls_ReadListPrim<int>* MakeReadListPrim(int const& type);
  virtual cls_ReadListPrim<unsigned int>* MakeReadListPrim(unsigned int const& type);
  virtual cls_ReadListPrim<double>* MakeReadListPrim(double const& type);
  virtual cls_ReadListPrim<float>* MakeReadListPrim(float const& type);
  virtual cls_ReadListPrim<cow_String>* MakeReadListPrim(cow_String const& type);
  virtual cls_ReadListPrim<bool>* MakeReadListPrim(bool const& type);
  virtual cls_AgentListObj* MakeAgentListObj();
  virtual cls_AgentListPrim<bool>* MakeAgentListBool();
  virtual cls_AgentListPrim<double>* MakeAgentListDouble();
  virtual cls_AgentListPrim<float>* MakeAgentListFloat();
  virtual cls_AgentListPrim<int>* MakeAgentListInt();
  virtual cls_AgentListPrim<cow_String>* MakeAgentListString();
  virtual cls_AgentListPrim<unsigned int>* MakeAgentListUint();
  virtual cls_AgentBlob* MakeAgentBlob();

  virtual cls_ReadMapInt2Obj* MakeReadMapInt2Obj();
  virtual cls_ReadMapInt2Obj* MakeAltReadMapInt2Obj();
  virtual cls_ReadMapKey2Obj<cow_String>* MakeReadMapString2Obj();
  virtual cls_ReadMapKey2Prim<int, double>* MakeReadMapInt2Prim(double const& type);
  virtual cls_ReadMapKey2Prim<int, float>* MakeReadMapInt2Prim(float const& type);
  virtual cls_ReadMapKey2Prim<int, int>* MakeReadMapInt2Prim(int const& type);
  virtual cls_ReadMapKey2Prim<int, cow_String>* MakeReadMapInt2Prim(cow_String const& type);
  virtual cls_ReadMapKey2Prim<int, unsigned int>* MakeReadMapInt2Prim(unsigned int const& type);
  virtual cls_ReadIntTableInt* MakeReadIntTableInt(int const& type);
  virtual cls_ReadMapKey2Prim<int, double>* MakeAltReadMapInt2Prim(double const& type);
  virtual cls_ReadMapKey2Prim<int, float>* MakeAltReadMapInt2Prim(float const& type);
  virtual cls_ReadMapKey2Prim<int, int>* MakeAltReadMapInt2Prim(int const& type);
  virtual cls_ReadMapKey2Prim<int, cow_String>* MakeAltReadMapInt2Prim(cow_String const& type);
  virtual cls_ReadMapKey2Prim<int, unsigned int>* MakeAltReadMapInt2Prim(unsigned int const& type);
  virtual cls_ReadMapKey2Prim<cow_String, double>* MakeReadMapString2Prim(double const& type);
  virtual cls_ReadMapKey2Prim<cow_String, float>* MakeReadMapString2Prim(float const& type);
  virtual cls_ReadMapKey2Prim<cow_String, int>* MakeReadMapString2Prim(int const& type);
  virtual cls_ReadMapKey2Prim<cow_String, cow_String>* MakeReadMapString2Prim(cow_String const& type);
  virtual cls_ReadMapKey2Prim<cow_String, unsigned int>* MakeReadMapString2Prim(unsigned int const& type);
  virtual cls_ReadIntTableInt* MakeAltReadIntTableInt(int const& type);
  virtual cls_AgentMapKey2Obj<int>* MakeAgentMapInt2Obj();
  virtual cls_AgentMapKey2Obj<cow_String>* MakeAgentMapString2Obj();

  // The object that field refers to, which must be of class cid or derive
  // from it, held unloaded; a proxy without a value for a null reference.
  // The receiver owns it. Here: null.
  virtual cls_AgentProxy* MakeAgentProxy(cls_FieldHandle const& field, unsigned int cid);

  // Who deletes a memento: the visitor that receives it, or its creator
  // (a root memento on the creator's stack).
  enum Ownership { kOwnedByVisitor, kOwnedByCreator };

protected:
  explicit cls_MementoRead(Ownership ownership) : m_Ownership(ownership) {}

private:
  Ownership m_Ownership;
};

#endif
