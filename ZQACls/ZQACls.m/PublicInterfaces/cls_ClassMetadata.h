#ifndef cls_ClassMetadata_h
#define cls_ClassMetadata_h

#include "ZQABasExport.h"
#include "cls_AttributeMetadata.h"
#include "cls_FieldHandle.h"
#include "cow_String.h"
#include "omi_Btree.h"

class cls_CowValue;
class cls_ReadVisitor;
class cls_WriteVisitor;

using cls_MapName2Attribute = omi_Btree<cow_String, cls_AttributeMetadata>;

// One version of a persistent class: what the object layer needs to give it
// a table and to move its objects. Attributes are kept by name, so a table's
// columns follow the byte order of the names whatever the order in which
// they were added.
//
// A class is built by the object layer through Ctor; a class registered
// without a constructor (an abstract base) is never built alone. The
// copy-on-write destructor ends a shared value of the class when the
// object layer's cache lets go of it; a class without one inherits its base
// class's (the object layer looks up the chain).
//
// Invariant: MaxFieldID() is the largest field id of the attributes, -1
// without attributes.
class ZQA_EXPORT cls_ClassMetadata {
public:
  using Constructor = void* (*)(cls_ReadVisitor const&);
  using CowDestructor = void (*)(cls_CowValue*);

  cls_ClassMetadata(cow_String const& name, unsigned int classId, int version, Constructor ctor,
                    unsigned int baseClassId);
  cls_ClassMetadata(cls_ClassMetadata const&) = delete;
  cls_ClassMetadata& operator=(cls_ClassMetadata const&) = delete;
  virtual ~cls_ClassMetadata();

  // Adds an attribute; a second attribute of the same name replaces the
  // first. Answers this metadata, for chaining.
  cls_ClassMetadata& AddAttribute(cls_FieldHandle const& field, cls_AttributeType type,
                                  unsigned int targetClass = cls_kNoClass,
                                  cls_CollectionType collection = cls_CollNone);
  cls_ClassMetadata& AddTableExtentQuantum(int quantum);
  cls_ClassMetadata& AddDtor(CowDestructor destructor);

  // Writes the object at object (of this class) through visitor. Nothing
  // here: a class known by its C++ type (cls_TypeAdapter) writes itself.
  virtual void DBWrite(void const* object, cls_WriteVisitor const& visitor) const;
  // Deletes an object that Ctor built. Nothing here, see DBWrite.
  virtual void Delete(void* object) const;
  // Ends a shared value of this class with the registered destructor;
  // nothing without one.
  virtual void DeleteCow(cls_CowValue* value) const;
  // A new object built from a reader; null for a class without a constructor.
  virtual void* Ctor(cls_ReadVisitor const& visitor) const;

  cow_String const& ClassName() const { return m_Name; }
  unsigned int ClassId() const { return m_ClassId; }
  unsigned int BaseClassId() const { return m_BaseClassId; }
  int GetVersion() const { return m_Version; }
  int ExtentQuantum() const { return m_ExtentQuantum; }
  bool HasCtor() const { return m_Ctor != nullptr; }
  bool HasCowDtor() const { return m_CowDtor != nullptr; }
  int MaxFieldID() const { return m_MaxFieldId; }
  int AttributeCount() const { return m_Attributes.Size(); }
  // The attributes by name; walk them with an omi_BtreeIterator.
  cls_MapName2Attribute const& Attributes() const { return m_Attributes; }
  // The attribute named name, or an attribute with field id -1, no type's
  // meaning and no collection when there is none.
  cls_AttributeMetadata const& FindAttribute(cow_String const& name) const;

private:
  cow_String m_Name;
  unsigned int m_ClassId;
  unsigned int m_BaseClassId;
  int m_Version;
  Constructor m_Ctor;
  CowDestructor m_CowDtor = nullptr;
  int m_ExtentQuantum;
  int m_MaxFieldId = -1;
  cls_MapName2Attribute m_Attributes;
};

#endif
