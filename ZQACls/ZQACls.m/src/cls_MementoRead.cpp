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
