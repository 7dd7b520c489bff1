#include "cls_WriteVisitor.h"

#include "ZQABasAssert.h"
#include "cls_AgentListObj.h"
#include "cls_AgentRequest.h"
#include "cls_WriteListObj.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ClassMetadata.h"
#include "cls_ClassRegistrar.h"

namespace {

char const kSourcePath[] = "ZQACls/ZQACls.m/src/cls_WriteVisitor";

// The field of a visitor that writes no member of its parent.
int const kNoField = -1;

}  // namespace

cls_WriteVisitor::cls_WriteVisitor(cls_MementoWrite* memento)
    : m_Form(Form::kRoot), m_Field(kNoField, cow_String()), m_Memento(memento) {}

cls_WriteVisitor::cls_WriteVisitor(cls_WriteVisitor const& parent, cls_FieldHandle const& field,
                                   cls_CowValue const* cow, void const* ptr)
    : m_Form(Form::kMember), m_Parent(&parent), m_Field(field), m_Cow(cow ? *cow : cls_CowValue()), m_Pointer(ptr) {}

cls_WriteVisitor::cls_WriteVisitor(cls_WriteVisitor const& parent, cls_FieldHandle const& field,
                                   cls_CowValue const& cow)
    : cls_WriteVisitor(parent, field, &cow, nullptr) {}

cls_WriteVisitor::cls_WriteVisitor(cls_WriteVisitor const& parent, unsigned int baseClass)
    : m_Form(Form::kBase), m_Parent(&parent), m_Field(kNoField, cow_String()), m_BaseClass(baseClass) {}

cls_WriteVisitor::cls_WriteVisitor(cls_WriteListObj& list, cls_CowValue const* cow, void const* ptr)
    : m_Form(Form::kElement), m_Field(kNoField, cow_String()), m_Cow(cow ? *cow : cls_CowValue()), m_Pointer(ptr),
      m_List(&list) {}

cls_WriteVisitor::cls_WriteVisitor(cls_AgentListObj& agent, int index, cls_CowValue const* cow, void const* ptr)
    : m_Form(Form::kElement), m_Field(kNoField, cow_String()), m_Cow(cow ? *cow : cls_CowValue()), m_Pointer(ptr),
      m_Agent(&agent), m_Index(index) {}

cls_WriteVisitor::cls_WriteVisitor(cls_AgentRequest const& request, cls_CowValue const* cow, void const* ptr)
    : m_Form(Form::kElement), m_Field(kNoField, cow_String()), m_Cow(cow ? *cow : cls_CowValue()), m_Pointer(ptr),
      m_Request(&request) {}

cls_WriteVisitor::~cls_WriteVisitor() {
  if (m_Memento != nullptr && m_Memento->NeedsDeletion()) delete m_Memento;
}

bool cls_WriteVisitor::StartWrite(unsigned int cid, cls_Uid const& uid) const {
  if (m_Form == Form::kRoot) return m_Memento != nullptr;
  // A second row would replace the first, which the object layer has
  // already linked to the parent's field.
  if (m_Started) nex_ThrowAssertion(kSourcePath, __LINE__, "cls_WriteVisitor::StartWrite - called twice");
  m_Started = true;
  if (m_Form == Form::kElement) {
    m_Memento = MakeElementRow(cid, uid);
    return m_Memento != nullptr;
  }
  cls_MementoWrite* parent = m_Parent->m_Memento;
  if (parent == nullptr) return false;
  if (m_Form == Form::kBase) {
    if (cid != m_BaseClass)
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate("cls_WriteVisitor::StartWrite - The visitor of the base "
                                                          "class part of class %08X writes class %08X."),
                                            m_BaseClass, cid));
    m_Memento = parent->MakeBaseWriteObj(cid, uid);
  } else if (m_Cow.HasValue() || m_Pointer == nullptr) {
    // A shared value wins over an address: the cache of shared values lasts
    // as long as the transporter, the one of addresses only for one output.
    m_Memento = parent->MakeWriteObj(m_Field, cid, uid, m_Cow.HasValue() ? &m_Cow : nullptr);
  } else {
    m_Memento = parent->MakeWriteObjWithPtr(m_Field, cid, uid, m_Pointer);
  }
  return m_Memento != nullptr;
}

cls_MementoWrite* cls_WriteVisitor::MakeElementRow(unsigned int cid, cls_Uid const& uid) const {
  // As for a member: a shared value wins over an address.
  bool const byValue = m_Cow.HasValue() || m_Pointer == nullptr;
  cls_CowValue const* cow = m_Cow.HasValue() ? &m_Cow : nullptr;
  if (m_Request != nullptr)
    return byValue ? m_Request->MakeWriteObj(cid, uid, cow) : m_Request->MakeWriteObjWithPtr(cid, uid, m_Pointer);
  if (m_List != nullptr)
    return byValue ? m_List->MakeWriteObj(cid, uid, cow) : m_List->MakeWriteObjWithPtr(cid, uid, m_Pointer);
  return byValue ? m_Agent->MakeWriteObj(m_Index, cid, uid, cow)
                 : m_Agent->MakeWriteObjWithPtr(m_Index, cid, uid, m_Pointer);
}

void cls_WriteVisitor::WriteNullObj(cls_FieldHandle const& field) const { Row().WriteNullObj(field); }

void cls_WriteVisitor::CheckCollectionType(cls_CollectionType implemented) const {
  if (m_Form != Form::kMember || m_Parent->m_Memento == nullptr) return;
  m_Parent->m_Memento->CheckCollectionType(implemented, m_Field.Name());
}

cls_MementoWrite& cls_WriteVisitor::Row() const {
  if (m_Memento == nullptr)
    nex_ThrowAssertion(kSourcePath, __LINE__,
                       "cls_WriteVisitor - no row to write to: StartWrite answered false or was not called");
  return *m_Memento;
}

void cls_WriteVisitor::WriteObjOfClass(cls_FieldHandle const& field, cls_CowValue const& value,
                                       unsigned int cid) const {
  if (!value.HasValue()) {
    WriteNullObj(field);
    return;
  }
  cls_ClassMetadata const& metadata = Row().Registrar().ConstGet(cid);
  metadata.DBWrite(value.Address(), cls_WriteVisitor(*this, field, value));
}
