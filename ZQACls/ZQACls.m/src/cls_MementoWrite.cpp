#include "cls_MementoWrite.h"

cls_MementoWrite::~cls_MementoWrite() = default;

cls_WriteListObj* cls_MementoWrite::MakeWriteListObj(int) { return nullptr; }
cls_WriteListPrim<int>* cls_MementoWrite::MakeWriteListPrim(int const&, int) { return nullptr; }
cls_WriteListPrim<unsigned int>* cls_MementoWrite::MakeWriteListPrim(unsigned int const&, int) { return nullptr; }
cls_WriteListPrim<double>* cls_MementoWrite::MakeWriteListPrim(double const&, int) { return nullptr; }
cls_WriteListPrim<float>* cls_MementoWrite::MakeWriteListPrim(float const&, int) { return nullptr; }
cls_WriteListPrim<cow_String>* cls_MementoWrite::MakeWriteListPrim(cow_String const&, int) { return nullptr; }
cls_WriteListPrim<bool>* cls_MementoWrite::MakeWriteListPrim(bool const&, int) { return nullptr; }
cls_AgentListObj* cls_MementoWrite::MakeAgentListObj() { return nullptr; }
cls_AgentListPrim<bool>* cls_MementoWrite::MakeAgentListBool(int) { return nullptr; }
cls_AgentListPrim<double>* cls_MementoWrite::MakeAgentListDouble(int) { return nullptr; }
cls_AgentListPrim<float>* cls_MementoWrite::MakeAgentListFloat(int) { return nullptr; }
cls_AgentListPrim<int>* cls_MementoWrite::MakeAgentListInt(int) { return nullptr; }
cls_AgentListPrim<cow_String>* cls_MementoWrite::MakeAgentListString(int) { return nullptr; }
cls_AgentListPrim<unsigned int>* cls_MementoWrite::MakeAgentListUint(int) { return nullptr; }
cls_AgentBlob* cls_MementoWrite::MakeAgentBlob() { return nullptr; }

cls_WriteMapKey2Obj<int>* cls_MementoWrite::MakeWriteMapInt2Obj() { return nullptr; }
cls_WriteMapKey2Obj<int>* cls_MementoWrite::MakeAltWriteMapInt2Obj() { return nullptr; }
cls_WriteMapKey2Obj<cow_String>* cls_MementoWrite::MakeWriteMapString2Obj() { return nullptr; }
cls_WriteMapKey2Prim<int, double>* cls_MementoWrite::MakeWriteMapInt2Prim(double const&) { return nullptr; }
cls_WriteMapKey2Prim<int, float>* cls_MementoWrite::MakeWriteMapInt2Prim(float const&) { return nullptr; }
cls_WriteMapKey2Prim<int, int>* cls_MementoWrite::MakeWriteMapInt2Prim(int const&) { return nullptr; }
cls_WriteMapKey2Prim<int, cow_String>* cls_MementoWrite::MakeWriteMapInt2Prim(cow_String const&) { return nullptr; }
cls_WriteMapKey2Prim<int, unsigned int>* cls_MementoWrite::MakeWriteMapInt2Prim(unsigned int const&) { return nullptr; }
cls_WriteMapKey2Prim<int, double>* cls_MementoWrite::MakeAltWriteMapInt2Prim(double const&) { return nullptr; }
cls_WriteMapKey2Prim<int, float>* cls_MementoWrite::MakeAltWriteMapInt2Prim(float const&) { return nullptr; }
cls_WriteMapKey2Prim<int, int>* cls_MementoWrite::MakeAltWriteMapInt2Prim(int const&) { return nullptr; }
cls_WriteMapKey2Prim<int, cow_String>* cls_MementoWrite::MakeAltWriteMapInt2Prim(cow_String const&) { return nullptr; }
cls_WriteMapKey2Prim<int, unsigned int>* cls_MementoWrite::MakeAltWriteMapInt2Prim(unsigned int const&) { return nullptr; }
cls_WriteMapKey2Prim<cow_String, double>* cls_MementoWrite::MakeWriteMapString2Prim(double const&) { return nullptr; }
cls_WriteMapKey2Prim<cow_String, float>* cls_MementoWrite::MakeWriteMapString2Prim(float const&) { return nullptr; }
cls_WriteMapKey2Prim<cow_String, int>* cls_MementoWrite::MakeWriteMapString2Prim(int const&) { return nullptr; }
cls_WriteMapKey2Prim<cow_String, cow_String>* cls_MementoWrite::MakeWriteMapString2Prim(cow_String const&) { return nullptr; }
cls_WriteMapKey2Prim<cow_String, unsigned int>* cls_MementoWrite::MakeWriteMapString2Prim(unsigned int const&) { return nullptr; }
cls_WriteIntTableInt* cls_MementoWrite::MakeWriteIntTableInt(int const&) { return nullptr; }
cls_WriteIntTableInt* cls_MementoWrite::MakeAltWriteIntTableInt(int const&) { return nullptr; }
cls_AgentMapKey2Obj<int>* cls_MementoWrite::MakeAgentMapInt2Obj() { return nullptr; }
cls_AgentMapKey2Obj<cow_String>* cls_MementoWrite::MakeAgentMapString2Obj() { return nullptr; }
bool cls_MementoWrite::CopyBranch(cls_AgentProxy*, cls_FieldHandle const&) { return false; }
