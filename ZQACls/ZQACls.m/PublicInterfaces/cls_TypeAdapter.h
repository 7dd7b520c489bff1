#ifndef cls_TypeAdapter_h
#define cls_TypeAdapter_h

#include "cls_ClassMetadata.h"

// The metadata of a C++ class T that the object layer builds, writes and
// deletes: T has a constructor from cls_ReadVisitor const& and a member
// DBWrite(cls_WriteVisitor const&) const. Made by
// cls_ClassRegistrar::Register<T>.
template <class T>
class cls_TypeAdapter : public cls_ClassMetadata {
public:
  cls_TypeAdapter(cow_String const& name, unsigned int classId, int version, unsigned int baseClassId)
      : cls_ClassMetadata(name, classId, version, &Build, baseClassId) {}

  void DBWrite(void const* object, cls_WriteVisitor const& visitor) const override {
    static_cast<T const*>(object)->DBWrite(visitor);
  }
  void Delete(void* object) const override { delete static_cast<T*>(object); }

private:
  static void* Build(cls_ReadVisitor const& visitor) { return new T(visitor); }
};

#endif
