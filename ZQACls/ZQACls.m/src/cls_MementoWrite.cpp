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
