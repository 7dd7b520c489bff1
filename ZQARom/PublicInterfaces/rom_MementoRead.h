#ifndef rom_MementoRead_h
#define rom_MementoRead_h

#include "ZQABasExport.h"
#include "cls_MementoRead.h"
#include "cls_Uid.h"
#include "rfm_FieldHandle.h"
#include "rfm_Row.h"

class rom_ClassBag;
class rom_Transporter;

// One row of one class table while a class's reading constructor pulls its
// members out: the object layer's read memento. Members that are objects
// are built as the class stored in the row, found in the transporter's
// barns when they were built already.
//
// A member the row's table lacks (a file of an older class version), or in
// which the row holds no data, reads as the value the caller passed; a class
// without a table has no row, and every member of it reads so.
class ZQA_EXPORT rom_MementoRead : public cls_MementoRead {
public:
  // Row oid of class cid, which must exist; uid is the object's identity.
  rom_MementoRead(rom_Transporter& transporter, unsigned int cid, int oid, cls_Uid const& uid);
  ~rom_MementoRead() override;

  void const* DbId() const override;
  cls_Uid const& GetUid() const override { return m_Uid; }
  bool FieldIsPresent(cls_FieldHandle const& field) const override;
  bool DataIsPresent(cls_FieldHandle const& field) const override;
  bool ObjIsPresent(cls_FieldHandle const& field) const override;
  cls_MementoRead* MakeReadObj(cls_FieldHandle const& field) override;
  cls_MementoRead* MakeBaseReadObj() override;

  bool Read(cls_FieldHandle const& field, bool const& type) override;
  char Read(cls_FieldHandle const& field, char const& type) override;
  unsigned char Read(cls_FieldHandle const& field, unsigned char const& type) override;
  short Read(cls_FieldHandle const& field, short const& type) override;
  unsigned short Read(cls_FieldHandle const& field, unsigned short const& type) override;
  int Read(cls_FieldHandle const& field, int const& type) override;
  unsigned int Read(cls_FieldHandle const& field, unsigned int const& type) override;
  float Read(cls_FieldHandle const& field, float const& type) override;
  double Read(cls_FieldHandle const& field, double const& type) override;
  cow_String Read(cls_FieldHandle const& field, cow_String const& type) override;
  // Always raises: an enumeration persists as its text.
  int ReadEnumAsInt(cls_FieldHandle const& field) override;

  void* ReadObjPtr(cls_FieldHandle const& field, unsigned int cid) override;
  cls_CowValue const& ReadObjCow(cls_FieldHandle const& field, unsigned int cid) override;

  // The collections of this memento's row, a row of a collection class: its
  // first column holds the store's handle, its second a list's column count
  // (1 when it holds none). Null when the row holds no handle.
  // Raises for a reference to a row of another class.
  cls_MementoRead* MakeReadCollection(cls_FieldHandle const& field, unsigned int collectionClass) override;
  cls_ReadListObj* MakeReadListObj() override;
  cls_ReadListPrim<int>* MakeReadListPrim(int const& type) override;
  cls_ReadListPrim<unsigned int>* MakeReadListPrim(unsigned int const& type) override;
  cls_ReadListPrim<double>* MakeReadListPrim(double const& type) override;
  cls_ReadListPrim<float>* MakeReadListPrim(float const& type) override;
  cls_ReadListPrim<cow_String>* MakeReadListPrim(cow_String const& type) override;
  cls_ReadListPrim<bool>* MakeReadListPrim(bool const& type) override;
  cls_AgentListObj* MakeAgentListObj() override;
  cls_AgentListPrim<bool>* MakeAgentListBool() override;
  cls_AgentListPrim<double>* MakeAgentListDouble() override;
  cls_AgentListPrim<float>* MakeAgentListFloat() override;
  cls_AgentListPrim<int>* MakeAgentListInt() override;
  cls_AgentListPrim<cow_String>* MakeAgentListString() override;
  cls_AgentListPrim<unsigned int>* MakeAgentListUint() override;
  cls_AgentBlob* MakeAgentBlob() override;

  cls_ReadMapInt2Obj* MakeReadMapInt2Obj() override;
  cls_ReadMapInt2Obj* MakeAltReadMapInt2Obj() override;
  cls_ReadMapKey2Obj<cow_String>* MakeReadMapString2Obj() override;
  cls_ReadMapKey2Prim<int, double>* MakeReadMapInt2Prim(double const& type) override;
  cls_ReadMapKey2Prim<int, float>* MakeReadMapInt2Prim(float const& type) override;
  cls_ReadMapKey2Prim<int, int>* MakeReadMapInt2Prim(int const& type) override;
  cls_ReadMapKey2Prim<int, cow_String>* MakeReadMapInt2Prim(cow_String const& type) override;
  cls_ReadMapKey2Prim<int, unsigned int>* MakeReadMapInt2Prim(unsigned int const& type) override;
  cls_ReadIntTableInt* MakeReadIntTableInt(int const& type) override;
  cls_ReadMapKey2Prim<int, double>* MakeAltReadMapInt2Prim(double const& type) override;
  cls_ReadMapKey2Prim<int, float>* MakeAltReadMapInt2Prim(float const& type) override;
  cls_ReadMapKey2Prim<int, int>* MakeAltReadMapInt2Prim(int const& type) override;
  cls_ReadMapKey2Prim<int, cow_String>* MakeAltReadMapInt2Prim(cow_String const& type) override;
  cls_ReadMapKey2Prim<int, unsigned int>* MakeAltReadMapInt2Prim(unsigned int const& type) override;
  cls_ReadMapKey2Prim<cow_String, double>* MakeReadMapString2Prim(double const& type) override;
  cls_ReadMapKey2Prim<cow_String, float>* MakeReadMapString2Prim(float const& type) override;
  cls_ReadMapKey2Prim<cow_String, int>* MakeReadMapString2Prim(int const& type) override;
  cls_ReadMapKey2Prim<cow_String, cow_String>* MakeReadMapString2Prim(cow_String const& type) override;
  cls_ReadMapKey2Prim<cow_String, unsigned int>* MakeReadMapString2Prim(unsigned int const& type) override;
  cls_ReadIntTableInt* MakeAltReadIntTableInt(int const& type) override;
  cls_AgentMapKey2Obj<int>* MakeAgentMapInt2Obj() override;
  cls_AgentMapKey2Obj<cow_String>* MakeAgentMapString2Obj() override;

  unsigned int ClassId() const { return m_Cid; }
  int Oid() const { return m_Row.IsNull() ? -1 : m_Row.Location(); }

  // The object field refers to, held unloaded (rom_AgentProxy); a proxy
  // without a value for a null or missing reference. Raises at once, as
  // ReadObjCow would, when the stored class does not derive from cid.
  cls_AgentProxy* MakeAgentProxy(cls_FieldHandle const& field, unsigned int cid) override;

private:
  // The store's handle in the row's column handleColumn; false when the row
  // holds none.
  bool CollectionHandle(rfm_Handle& handle, int handleColumn) const;
  // The list's column count; raises for one below 1, which no list has.
  int CollectionColumns() const;
  template <class Reader>
  Reader* MakeReader();
  template <class Agent>
  Agent* MakeAgent();
  // A map's reader on the handle in the row's column handleColumn.
  template <class Reader>
  Reader* MakeMapReader(int handleColumn);
  // The agent of a list or map of objects, which keeps no column count.
  template <class Agent>
  Agent* MakeObjectAgent();
  // The reference in field; false for a null one.
  bool ReadReference(cls_FieldHandle const& field, unsigned int& cid, int& oid) const;
  // The memento of the row (cid, oid) with the identity its history gives it.
  rom_MementoRead* MakeMemento(unsigned int cid, int oid);
  int ReadInt(cls_FieldHandle const& field, int absent) const;

  rom_Transporter* m_Transporter;
  rom_ClassBag const* m_Bag;
  rfm_Row m_Row;
  unsigned int m_Cid;
  cls_Uid m_Uid;
};

#endif
