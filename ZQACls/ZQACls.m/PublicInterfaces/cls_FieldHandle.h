#ifndef cls_FieldHandle_h
#define cls_FieldHandle_h

#include "ZQABasExport.h"
#include "cow_String.h"

// How application code names a member of a persistent class: the field id
// the class registered (small, unique in the class) and the member's name,
// which is its column's name in the class's table. The object layer maps
// the id to a column in one array lookup; the name finds the column in a
// table of another layout.
class ZQA_EXPORT cls_FieldHandle {
public:
  cls_FieldHandle(int fieldId, cow_String const& name) : m_FieldId(fieldId), m_Name(name) {}
  cls_FieldHandle(int fieldId, char const* name) : m_FieldId(fieldId), m_Name(name) {}

  int FieldId() const { return m_FieldId; }
  cow_String const& Name() const { return m_Name; }

private:
  int m_FieldId;
  cow_String m_Name;
};

#endif
