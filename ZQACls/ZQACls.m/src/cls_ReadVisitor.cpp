#include "cls_ReadVisitor.h"

#include "cls_Static.h"

cls_ReadVisitor::cls_ReadVisitor(cls_MementoRead* memento) : m_Memento(memento) {
  if (memento != nullptr && memento->NeedsDeletion()) m_Owner = memento;
}

cls_ReadVisitor::cls_ReadVisitor(cls_ReadVisitor const& parent, cls_FieldHandle const& field)
    : cls_ReadVisitor(parent.m_Memento != nullptr ? parent.m_Memento->MakeReadObj(field) : nullptr) {}

cls_ReadVisitor cls_ReadVisitor::Collection(cls_ReadVisitor const& parent, cls_FieldHandle const& field,
                                            unsigned int collectionClass) {
  return cls_ReadVisitor(parent.m_Memento != nullptr ? parent.m_Memento->MakeReadCollection(field, collectionClass)
                                                     : nullptr);
}

cls_ReadVisitor cls_ReadVisitor::Base(cls_ReadVisitor const& derived) {
  return cls_ReadVisitor(derived.m_Memento != nullptr ? derived.m_Memento->MakeBaseReadObj() : nullptr);
}

cls_ReadVisitor::cls_ReadVisitor(cls_ReadVisitor const& other) = default;

cls_ReadVisitor& cls_ReadVisitor::operator=(cls_ReadVisitor const& other) = default;

cls_ReadVisitor::~cls_ReadVisitor() = default;

cls_Uid const& cls_ReadVisitor::GetUid() const {
  return m_Memento != nullptr ? m_Memento->GetUid() : cls_Static::ConstUid();
}

bool cls_ReadVisitor::FieldIsPresent(cls_FieldHandle const& field) const {
  return m_Memento != nullptr && m_Memento->FieldIsPresent(field);
}

bool cls_ReadVisitor::ObjIsPresent(cls_FieldHandle const& field) const {
  return m_Memento != nullptr && m_Memento->ObjIsPresent(field);
}
