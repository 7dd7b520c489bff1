#ifndef cls_AttributeMetadata_h
#define cls_AttributeMetadata_h

#include "cls_AttributeType.h"
#include "cls_CollectionType.h"
#include "cow_String.h"

// One attribute of a persistent class: its field id, what it holds, the
// class an object member refers to (cls_kNoClass for values), the collection
// that implements it, and its name.
struct cls_AttributeMetadata {
  int m_FieldId = -1;
  cls_AttributeType m_Type = cls_AttrInt;
  unsigned int m_TargetClass = cls_kNoClass;
  cls_CollectionType m_Collection = cls_CollNone;
  cow_String m_Name;
};

#endif
