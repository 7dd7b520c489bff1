#ifndef cls_CowDtor_h
#define cls_CowDtor_h

#include "cls_ClassIdOf.h"
#include "cls_CowValue.h"

// The copy-on-write destructor a class registers with
// cls_ClassMetadata::AddDtor, and that DeleteCow calls when the object
// layer's cache lets go of a value of the class: it drops the value's
// reference. A cls_CowValue knows how its own referent ends, so the function
// is the same for every class; T names the class in its registration and
// must be one the framework can name (cls_ClassIdOf).
template <class T>
void cls_CowDtor(cls_CowValue* value) {
  static_assert(cls_HasClassId<T>::value, "cls_CowDtor: T needs a class id (T::kClassId or cls_ClassIdOf<T>)");
  value->Reset();
}

#endif
