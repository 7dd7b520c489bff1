#ifndef rom_MementoWrite_h
#define rom_MementoWrite_h

#include "ZQABasExport.h"
#include "cls_MementoWrite.h"
#include "rfm_Row.h"
#include "rom_CidOid.h"

#include <memory>

class rom_ClassBag;
class rom_PtrBarn;
class rom_Transporter;

// One row of one class table while an object's DBWrite pours its members in:
// the object layer's write memento. It decides identity: an object member
// gets a new row, reuses the row its identity has in this database, or, if
// its copy-on-write value (or, within a shared-pointer output, its address)
// was stored already, only a reference to that row.
//
// A reference takes two int columns, "<field>#OID" and "<field>#ClassID",
// the second right after the first; the stored null reference is -1 and
// class 1. A class without a table (a marker) has no row: the memento
// stores nothing, and references to it are stored as null.
class ZQA_EXPORT rom_MementoWrite : public cls_MementoWrite {
public:
  // The row oid of class cid, or a new row for a negative oid; the visitor
  // that receives the memento owns it.
  rom_MementoWrite(rom_Transporter& transporter, unsigned int cid, int oid);
  // The same, owned by its creator: a root of a write on the stack.
  rom_MementoWrite(rom_Transporter& transporter, unsigned int cid, int oid, Ownership ownership);
  // A memento of no class and no row, owned by its creator: the parent of
  // objects written as roots, whose references it stores nowhere but in
  // LastReference.
  explicit rom_MementoWrite(rom_Transporter& transporter);
  ~rom_MementoWrite() override;

  cls_ClassRegistrar const& Registrar() const override;
  bool FieldIsPresent(cls_FieldHandle const& field) const override;
  cls_MementoWrite* MakeWriteObjWithPtr(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                        void const* ptr) override;
  cls_MementoWrite* MakeWriteObj(cls_FieldHandle const& field, unsigned int cid, cls_Uid const& uid,
                                 cls_CowValue const* cow) override;
  cls_MementoWrite* MakeBaseWriteObj(unsigned int cid, cls_Uid const& uid) override;
  void WriteNullObj(cls_FieldHandle const& field) override;

  void Write(cls_FieldHandle const& field, bool const& value) override;
  void Write(cls_FieldHandle const& field, char const& value) override;
  void Write(cls_FieldHandle const& field, unsigned char const& value) override;
  void Write(cls_FieldHandle const& field, short const& value) override;
  void Write(cls_FieldHandle const& field, unsigned short const& value) override;
  void Write(cls_FieldHandle const& field, int const& value) override;
  void Write(cls_FieldHandle const& field, unsigned int const& value) override;
  void Write(cls_FieldHandle const& field, float const& value) override;
  void Write(cls_FieldHandle const& field, double const& value) override;
  void Write(cls_FieldHandle const& field, cow_String const& value) override;
  // Always raises: an enumeration persists as its text.
  void WriteEnumAsInt(cls_FieldHandle const& field, int const& value) override;

  // The collections of this memento's row, a row of a collection class: its
  // first column holds the store's handle, its second a list's column count.
  cls_WriteListObj* MakeWriteListObj(int columns) override;
  cls_WriteListPrim<int>* MakeWriteListPrim(int const& type, int columns) override;
  cls_WriteListPrim<unsigned int>* MakeWriteListPrim(unsigned int const& type, int columns) override;
  cls_WriteListPrim<double>* MakeWriteListPrim(double const& type, int columns) override;
  cls_WriteListPrim<float>* MakeWriteListPrim(float const& type, int columns) override;
  cls_WriteListPrim<cow_String>* MakeWriteListPrim(cow_String const& type, int columns) override;
  cls_WriteListPrim<bool>* MakeWriteListPrim(bool const& type, int columns) override;
  cls_AgentListObj* MakeAgentListObj() override;
  cls_AgentListPrim<bool>* MakeAgentListBool(int columns) override;
  cls_AgentListPrim<double>* MakeAgentListDouble(int columns) override;
  cls_AgentListPrim<float>* MakeAgentListFloat(int columns) override;
  cls_AgentListPrim<int>* MakeAgentListInt(int columns) override;
  cls_AgentListPrim<cow_String>* MakeAgentListString(int columns) override;
  cls_AgentListPrim<unsigned int>* MakeAgentListUint(int columns) override;
  cls_AgentBlob* MakeAgentBlob() override;

  cls_WriteMapKey2Obj<int>* MakeWriteMapInt2Obj() override;
  cls_WriteMapKey2Obj<int>* MakeAltWriteMapInt2Obj() override;
  cls_WriteMapKey2Obj<cow_String>* MakeWriteMapString2Obj() override;
  cls_WriteMapKey2Prim<int, double>* MakeWriteMapInt2Prim(double const& type) override;
  cls_WriteMapKey2Prim<int, float>* MakeWriteMapInt2Prim(float const& type) override;
  cls_WriteMapKey2Prim<int, int>* MakeWriteMapInt2Prim(int const& type) override;
  cls_WriteMapKey2Prim<int, cow_String>* MakeWriteMapInt2Prim(cow_String const& type) override;
  cls_WriteMapKey2Prim<int, unsigned int>* MakeWriteMapInt2Prim(unsigned int const& type) override;
  cls_WriteIntTableInt* MakeWriteIntTableInt(int const& type) override;
  cls_WriteMapKey2Prim<int, double>* MakeAltWriteMapInt2Prim(double const& type) override;
  cls_WriteMapKey2Prim<int, float>* MakeAltWriteMapInt2Prim(float const& type) override;
  cls_WriteMapKey2Prim<int, int>* MakeAltWriteMapInt2Prim(int const& type) override;
  cls_WriteMapKey2Prim<int, cow_String>* MakeAltWriteMapInt2Prim(cow_String const& type) override;
  cls_WriteMapKey2Prim<int, unsigned int>* MakeAltWriteMapInt2Prim(unsigned int const& type) override;
  cls_WriteMapKey2Prim<cow_String, double>* MakeWriteMapString2Prim(double const& type) override;
  cls_WriteMapKey2Prim<cow_String, float>* MakeWriteMapString2Prim(float const& type) override;
  cls_WriteMapKey2Prim<cow_String, int>* MakeWriteMapString2Prim(int const& type) override;
  cls_WriteMapKey2Prim<cow_String, cow_String>* MakeWriteMapString2Prim(cow_String const& type) override;
  cls_WriteMapKey2Prim<cow_String, unsigned int>* MakeWriteMapString2Prim(unsigned int const& type) override;
  cls_WriteIntTableInt* MakeAltWriteIntTableInt(int const& type) override;
  cls_AgentMapKey2Obj<int>* MakeAgentMapInt2Obj() override;
  cls_AgentMapKey2Obj<cow_String>* MakeAgentMapString2Obj() override;

  void CheckCollectionType(cls_CollectionType implemented, cow_String const& member) const override;
  // A lazily held object's reference, through the proxy's Transfer.
  bool CopyBranch(cls_AgentProxy* proxy, cls_FieldHandle const& field) override;
  void StartSharedPtrOutput() override;
  void EndSharedPtrOutput() override;

  // The row's object id; -1 without a row.
  int Oid() const;
  unsigned int ClassId() const { return m_Cid; }
  // A reference to (cid, oid) in field, written as it is.
  void Write(cls_FieldHandle const& field, unsigned int cid, int oid);
  void NeuterString(cls_FieldHandle const& field, cow_String const& replacement);
  // The reference this memento wrote last (to an object member, stored or
  // made), so that a root write can tell where its object went.
  rom_CidOid const& LastReference() const { return m_LastReference; }

  // The memento of the row for the object of identity uid in class cid: its
  // own row when this database has one for the identity (a new identity and
  // row when the current write record has written it already), else a new
  // row. mismatch is the message for an identity whose row is of another
  // class; it takes the two class names.
  static rom_MementoWrite* MakeWriteObjImpl(rom_Transporter& transporter, unsigned int cid, cls_Uid const& uid,
                                            char const* mismatch);

  rom_Transporter& Transporter() const { return *m_Transporter; }

private:
  // The collection's writer on the handle in the row's column
  // handleColumn; a list's agent; the agent of a list or map of objects,
  // which keeps no column count.
  template <class Writer>
  Writer* MakeWriter(int columns, int handleColumn);
  template <class Agent>
  Agent* MakeAgent(int columns);
  template <class Agent>
  Agent* MakeObjectAgent();
  // The memento of the collection row field refers to already, when it is
  // a row of the collection class cid: an owner rewritten writes its
  // collections over in place. Null otherwise.
  rom_MementoWrite* ExistingCollection(cls_FieldHandle const& field, unsigned int cid);
  void WriteReference(cls_FieldHandle const& field, rom_CidOid const& target);
  void WriteColumns(rfm_FieldHandle const& oid, rfm_FieldHandle const& classId, rom_CidOid const& target) const;
  void WriteInt(cls_FieldHandle const& field, int value);

  rom_Transporter* m_Transporter;
  rom_ClassBag const* m_Bag;
  rfm_Row m_Row;
  unsigned int m_Cid;
  // The barn of this memento's shared-pointer output.
  std::unique_ptr<rom_PtrBarn> m_PtrBarn;
  rom_CidOid m_LastReference;
};

#endif
