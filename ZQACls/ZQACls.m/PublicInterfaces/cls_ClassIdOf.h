#ifndef cls_ClassIdOf_h
#define cls_ClassIdOf_h

#include <type_traits>

// The class id under which a C++ class is registered, for the operations
// that name a class by its C++ type: cls_ReadVisitor::ReadObjCow<T> and
// ReadObjPtr<T>, cls_WriteVisitor::WriteObj, cls_CowValue::As<T> on a value
// the object layer built, and the references of cls_Persistent.
//
// It is T::kClassId. A class that cannot carry that constant is given one by
// specialisation:
//   template <> struct cls_ClassIdOf<Foo> { static constexpr unsigned int kValue = 0x01000009; };
// A type with neither has no kValue: it is not a persistent class.
template <class T, class = void>
struct cls_ClassIdOf {};

template <class T>
struct cls_ClassIdOf<T, std::void_t<decltype(T::kClassId)>> {
  static constexpr unsigned int kValue = T::kClassId;
};

// Whether cls_ClassIdOf<T> gives T a class id.
template <class T, class = void>
struct cls_HasClassId : std::false_type {};

template <class T>
struct cls_HasClassId<T, std::void_t<decltype(cls_ClassIdOf<T>::kValue)>> : std::true_type {};

#endif
