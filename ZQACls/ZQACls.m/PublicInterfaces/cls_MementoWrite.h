#ifndef cls_MementoWrite_h
#define cls_MementoWrite_h

#include "ZQABasExport.h"
#include "cls_CollectionType.h"
#include "cow_String.h"

class cls_AgentBlob;
class cls_AgentListObj;
class cls_AgentProxy;
class cls_ClassRegistrar;
class cls_CowValue;
class cls_FieldHandle;
class cls_Uid;
class cls_WriteListObj;
class cls_WriteIntTableInt;
template <class T>
class cls_AgentListPrim;
template <class K>
class cls_AgentMapKey2Obj;
template <class T>
class cls_WriteListPrim;
template <class K>
class cls_WriteMapKey2Obj;
template <class K, class T>
class cls_WriteMapKey2Prim;

// One row being written: what a cls_WriteVisitor pours an object's members
// into. The object layer implements it on its tables; the framework knows
// only this interface.
//
// The Make... operations answer the memento of another row (an object
// member, the base class part), or null when nothing is to be written there:
// the object is stored already, or its class has no table. Whoever receives
// a memento deletes it when NeedsDeletion() says so; the visitors do.
//
// A collection (a list, a map, a blob) is stored through the memento of its own
// row, a row of one of the object layer's collection classes
// (cls_CollectionClass.h), which a member visitor's StartWrite answered. The
// Make... operations for collections answer the collection's writer or
// agent, which empties a collection the row holds already (except a blob),
// or makes a new one; columns is the number of elements in a logical row of
// the list. The MakeAlt... operations answer the second collection of a
// double collection's row. A memento that stores no collections answers
// null.
class ZQA_EXPORT cls_MementoWrite {
public:
  cls_MementoWrite(cls_MementoWrite const&) = delete;
  cls_MementoWrite& operator=(cls_MementoWrite const&) = delete;
  virtual ~cls_MementoWrite();

  // Whether the visitor that receives this memento owns it.
  bool NeedsDeletion() const { return m_Ownership == kOwnedByVisitor; }

  // The classes whose metadata writes the members that are objects
  // (cls_WriteVisitor::WriteObj).
  virtual cls_ClassRegistrar const& Registrar() const = 0;

  virtual bool FieldIsPresent(cls_FieldHandle const& field) const = 0;
  // The row of an object held by pointer in field; ptr identifies it within
  // a shared-pointer output.
  virtual cls_MementoWrite* MakeWriteObjWithPtr(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                                void const* ptr) = 0;
  // The row of an object in field; a copy-on-write value, when given, lets
  // the object layer store a shared value once.
  virtual cls_MementoWrite* MakeWriteObj(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                         cls_CowValue const* cow) = 0;
  // The row of this object's base class part.
  virtual cls_MementoWrite* MakeBaseWriteObj(unsigned int cid, cls_Uid const& uid) = 0;
  virtual void WriteNullObj(cls_FieldHandle const& field) = 0;

  virtual void Write(cls_FieldHandle const& field, bool const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, char const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, unsigned char const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, short const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, unsigned short const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, int const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, unsigned int const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, float const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, double const& value) = 0;
  virtual void Write(cls_FieldHandle const& field, cow_String const& value) = 0;
  virtual void WriteEnumAsInt(cls_FieldHandle const& field, int const& value) = 0;

  virtual cls_WriteListObj* MakeWriteListObj(int columns);
  virtual cls_WriteListPrim<int>* MakeWriteListPrim(int const& type, int columns);
  virtual cls_WriteListPrim<unsigned int>* MakeWriteListPrim(unsigned int const& type, int columns);
  virtual cls_WriteListPrim<double>* MakeWriteListPrim(double const& type, int columns);
  virtual cls_WriteListPrim<float>* MakeWriteListPrim(float const& type, int columns);
  virtual cls_WriteListPrim<cow_String>* MakeWriteListPrim(cow_String const& type, int columns);
  virtual cls_WriteListPrim<bool>* MakeWriteListPrim(bool const& type, int columns);
  virtual cls_AgentListObj* MakeAgentListObj();
  virtual cls_AgentListPrim<bool>* MakeAgentListBool(int columns);
  virtual cls_AgentListPrim<double>* MakeAgentListDouble(int columns);
  virtual cls_AgentListPrim<float>* MakeAgentListFloat(int columns);
  virtual cls_AgentListPrim<int>* MakeAgentListInt(int columns);
  virtual cls_AgentListPrim<cow_String>* MakeAgentListString(int columns);
  virtual cls_AgentListPrim<unsigned int>* MakeAgentListUint(int columns);
  virtual cls_AgentBlob* MakeAgentBlob();

  virtual cls_WriteMapKey2Obj<int>* MakeWriteMapInt2Obj();
  virtual cls_WriteMapKey2Obj<int>* MakeAltWriteMapInt2Obj();
  virtual cls_WriteMapKey2Obj<cow_String>* MakeWriteMapString2Obj();
  virtual cls_WriteMapKey2Prim<int, double>* MakeWriteMapInt2Prim(double const& type);
  virtual cls_WriteMapKey2Prim<int, float>* MakeWriteMapInt2Prim(float const& type);
  virtual cls_WriteMapKey2Prim<int, int>* MakeWriteMapInt2Prim(int const& type);
  virtual cls_WriteMapKey2Prim<int, cow_String>* MakeWriteMapInt2Prim(cow_String const& type);
  virtual cls_WriteMapKey2Prim<int, unsigned int>* MakeWriteMapInt2Prim(unsigned int const& type);
  virtual cls_WriteIntTableInt* MakeWriteIntTableInt(int const& type);
  virtual cls_WriteMapKey2Prim<int, double>* MakeAltWriteMapInt2Prim(double const& type);
  virtual cls_WriteMapKey2Prim<int, float>* MakeAltWriteMapInt2Prim(float const& type);
  virtual cls_WriteMapKey2Prim<int, int>* MakeAltWriteMapInt2Prim(int const& type);
  virtual cls_WriteMapKey2Prim<int, cow_String>* MakeAltWriteMapInt2Prim(cow_String const& type);
  virtual cls_WriteMapKey2Prim<int, unsigned int>* MakeAltWriteMapInt2Prim(unsigned int const& type);
  virtual cls_WriteMapKey2Prim<cow_String, double>* MakeWriteMapString2Prim(double const& type);
  virtual cls_WriteMapKey2Prim<cow_String, float>* MakeWriteMapString2Prim(float const& type);
  virtual cls_WriteMapKey2Prim<cow_String, int>* MakeWriteMapString2Prim(int const& type);
  virtual cls_WriteMapKey2Prim<cow_String, cow_String>* MakeWriteMapString2Prim(cow_String const& type);
  virtual cls_WriteMapKey2Prim<cow_String, unsigned int>* MakeWriteMapString2Prim(unsigned int const& type);
  virtual cls_WriteIntTableInt* MakeAltWriteIntTableInt(int const& type);
  virtual cls_AgentMapKey2Obj<int>* MakeAgentMapInt2Obj();
  virtual cls_AgentMapKey2Obj<cow_String>* MakeAgentMapString2Obj();

  // Writes the object proxy stands for into field without loading it
  // (cls_AgentProxy::Transfer); false when the caller must load and write
  // it. Here: false.
  virtual bool CopyBranch(cls_AgentProxy* proxy, cls_FieldHandle const& field);

  // Raises when the collection that implements member is not the one its
  // class declares.
  virtual void CheckCollectionType(cls_CollectionType implemented, cow_String const& member) const = 0;
  // Between these two, objects held by pointer are stored once each.
  virtual void StartSharedPtrOutput() = 0;
  virtual void EndSharedPtrOutput() = 0;

  // Who deletes a memento: the visitor that receives it, or its creator
  // (a root memento on the creator's stack).
  enum Ownership { kOwnedByVisitor, kOwnedByCreator };

protected:
  explicit cls_MementoWrite(Ownership ownership) : m_Ownership(ownership) {}

private:
  Ownership m_Ownership;
};

#endif
