#include "cls_ClassMetadata.h"

#include <algorithm>

namespace {
// The extent quantum of a class's table until the class sets one.
constexpr int kDefaultExtentQuantum = 32;
}

cls_ClassMetadata::cls_ClassMetadata(cow_String const& name, unsigned int classId, int version, Constructor ctor,
                                     unsigned int baseClassId)
    : m_Name(name),
      m_ClassId(classId),
      m_BaseClassId(baseClassId),
      m_Version(version),
      m_Ctor(ctor),
      m_ExtentQuantum(kDefaultExtentQuantum) {}

cls_ClassMetadata::~cls_ClassMetadata() = default;

cls_ClassMetadata& cls_ClassMetadata::AddAttribute(cls_FieldHandle const& field, cls_AttributeType type,
                                                   unsigned int targetClass, cls_CollectionType collection) {
  cls_AttributeMetadata attribute;
  attribute.m_FieldId = field.FieldId();
  attribute.m_Type = type;
  attribute.m_TargetClass = targetClass;
  attribute.m_Collection = collection;
  attribute.m_Name = field.Name();
  if (m_Attributes.IsMember(attribute.m_Name)) m_Attributes.Remove(attribute.m_Name);
  m_Attributes.Insert(attribute.m_Name, attribute);
  m_MaxFieldId = std::max(m_MaxFieldId, attribute.m_FieldId);
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddTableExtentQuantum(int quantum) {
  m_ExtentQuantum = quantum;
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddDtor(CowDestructor destructor) {
  m_CowDtor = destructor;
  return *this;
}

void cls_ClassMetadata::DBWrite(void const*, cls_WriteVisitor const&) const {}

void cls_ClassMetadata::Delete(void*) const {}

void cls_ClassMetadata::DeleteCow(cls_CowValue* value) const {
  if (m_CowDtor != nullptr) m_CowDtor(value);
}

void* cls_ClassMetadata::Ctor(cls_ReadVisitor const& visitor) const {
  return m_Ctor != nullptr ? m_Ctor(visitor) : nullptr;
}

cls_AttributeMetadata const& cls_ClassMetadata::FindAttribute(cow_String const& name) const {
  return m_Attributes.ConstGet(name);
}
