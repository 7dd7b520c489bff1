#include "cls_MementoRead.h"

cls_MementoRead::~cls_MementoRead() = default;

cls_MementoRead* cls_MementoRead::MakeReadCollection(cls_FieldHandle const& field, unsigned int) {
  return MakeReadObj(field);
}

cls_ReadListObj* cls_MementoRead::MakeReadListObj() { return nullptr; }
cls_ReadListPrim<int>* cls_MementoRead::MakeReadListPrim(int const&) { return nullptr; }
cls_ReadListPrim<unsigned int>* cls_MementoRead::MakeReadListPrim(unsigned int const&) { return nullptr; }
cls_ReadListPrim<double>* cls_MementoRead::MakeReadListPrim(double const&) { return nullptr; }
cls_ReadListPrim<float>* cls_MementoRead::MakeReadListPrim(float const&) { return nullptr; }
cls_ReadListPrim<cow_String>* cls_MementoRead::MakeReadListPrim(cow_String const&) { return nullptr; }
cls_ReadListPrim<bool>* cls_MementoRead::MakeReadListPrim(bool const&) { return nullptr; }
cls_AgentListObj* cls_MementoRead::MakeAgentListObj() { return nullptr; }
cls_AgentListPrim<bool>* cls_MementoRead::MakeAgentListBool() { return nullptr; }
cls_AgentListPrim<double>* cls_MementoRead::MakeAgentListDouble() { return nullptr; }
cls_AgentListPrim<float>* cls_MementoRead::MakeAgentListFloat() { return nullptr; }
cls_AgentListPrim<int>* cls_MementoRead::MakeAgentListInt() { return nullptr; }
cls_AgentListPrim<cow_String>* cls_MementoRead::MakeAgentListString() { return nullptr; }
cls_AgentListPrim<unsigned int>* cls_MementoRead::MakeAgentListUint() { return nullptr; }
cls_AgentBlob* cls_MementoRead::MakeAgentBlob() { return nullptr; }

cls_ReadMapInt2Obj* cls_MementoRead::MakeReadMapInt2Obj() { return nullptr; }
cls_ReadMapInt2Obj* cls_MementoRead::MakeAltReadMapInt2Obj() { return nullptr; }
cls_ReadMapKey2Obj<cow_String>* cls_MementoRead::MakeReadMapString2Obj() { return nullptr; }
cls_ReadMapKey2Prim<int, double>* cls_MementoRead::MakeReadMapInt2Prim(double const&) { return nullptr; }
cls_ReadMapKey2Prim<int, float>* cls_MementoRead::MakeReadMapInt2Prim(float const&) { return nullptr; }
cls_ReadMapKey2Prim<int, int>* cls_MementoRead::MakeReadMapInt2Prim(int const&) { return nullptr; }
cls_ReadMapKey2Prim<int, cow_String>* cls_MementoRead::MakeReadMapInt2Prim(cow_String const&) { return nullptr; }
cls_ReadMapKey2Prim<int, unsigned int>* cls_MementoRead::MakeReadMapInt2Prim(unsigned int const&) { return nullptr; }
cls_ReadMapKey2Prim<int, double>* cls_MementoRead::MakeAltReadMapInt2Prim(double const&) { return nullptr; }
cls_ReadMapKey2Prim<int, float>* cls_MementoRead::MakeAltReadMapInt2Prim(float const&) { return nullptr; }
cls_ReadMapKey2Prim<int, int>* cls_MementoRead::MakeAltReadMapInt2Prim(int const&) { return nullptr; }
cls_ReadMapKey2Prim<int, cow_String>* cls_MementoRead::MakeAltReadMapInt2Prim(cow_String const&) { return nullptr; }
cls_ReadMapKey2Prim<int, unsigned int>* cls_MementoRead::MakeAltReadMapInt2Prim(unsigned int const&) { return nullptr; }
cls_ReadMapKey2Prim<cow_String, double>* cls_MementoRead::MakeReadMapString2Prim(double const&) { return nullptr; }
cls_ReadMapKey2Prim<cow_String, float>* cls_MementoRead::MakeReadMapString2Prim(float const&) { return nullptr; }
cls_ReadMapKey2Prim<cow_String, int>* cls_MementoRead::MakeReadMapString2Prim(int const&) { return nullptr; }
cls_ReadMapKey2Prim<cow_String, cow_String>* cls_MementoRead::MakeReadMapString2Prim(cow_String const&) { return nullptr; }
cls_ReadMapKey2Prim<cow_String, unsigned int>* cls_MementoRead::MakeReadMapString2Prim(unsigned int const&) { return nullptr; }
cls_ReadIntTableInt* cls_MementoRead::MakeReadIntTableInt(int const&) { return nullptr; }
cls_ReadIntTableInt* cls_MementoRead::MakeAltReadIntTableInt(int const&) { return nullptr; }
cls_AgentMapKey2Obj<int>* cls_MementoRead::MakeAgentMapInt2Obj() { return nullptr; }
cls_AgentMapKey2Obj<cow_String>* cls_MementoRead::MakeAgentMapString2Obj() { return nullptr; }
cls_AgentProxy* cls_MementoRead::MakeAgentProxy(cls_FieldHandle const&, unsigned int) { return nullptr; }
