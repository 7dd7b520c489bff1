#ifndef cls_ReadVisitor_h
#define cls_ReadVisitor_h

#include "ZQABasExport.h"
#include "cls_ClassIdOf.h"
#include "cls_CowValue.h"
#include "cls_FieldHandle.h"
#include "cls_MementoRead.h"
#include "cls_Uid.h"
#include "cow_COW.h"
#include "cow_CountedHld.h"
#include "cow_String.h"

#include <type_traits>

// What a reading constructor is handed: the way to the row its members come
// from. A visitor is built on a memento the object layer made, on a parent's
// member (an object to build in place), or on the base class part of the
// parent's object (Base). Copies share the memento; the last copy deletes it
// if NeedsDeletion() said so.
//
// A visitor without a row (a null reference's member, a class without a
// table) reads every member as absent: FieldIsPresent is false, Read answers
// the value it was given, references read as null.
//
// Members that are objects are asked for by their C++ class, whose class id
// (cls_ClassIdOf) the object layer checks the stored class against. The
// object layer builds the stored class, which may derive from the class
// asked for; a value or pointer is given out only as its exact class: a
// copy-on-write value raises otherwise (cls_CowValue::As), and ReadObjPtr<T>
// must be used only where the stored objects are T's.
class ZQA_EXPORT cls_ReadVisitor {
public:
  // Takes ownership of memento if NeedsDeletion() says so.
  explicit cls_ReadVisitor(cls_MementoRead* memento);
  // The object in parent's member field (cls_MementoRead::MakeReadObj).
  cls_ReadVisitor(cls_ReadVisitor const& parent, cls_FieldHandle const& field);
  // The collection of class collectionClass in parent's member field
  // (cls_MementoRead::MakeReadCollection).
  static cls_ReadVisitor Collection(cls_ReadVisitor const& parent, cls_FieldHandle const& field,
                                    unsigned int collectionClass);
  // The base class part of derived's object (cls_MementoRead::MakeBaseReadObj).
  static cls_ReadVisitor Base(cls_ReadVisitor const& derived);
  cls_ReadVisitor(cls_ReadVisitor const& other);
  cls_ReadVisitor& operator=(cls_ReadVisitor const& other);
  ~cls_ReadVisitor();

  // The identity of the object on the row; null without a row.
  cls_Uid const& GetUid() const;
  bool FieldIsPresent(cls_FieldHandle const& field) const;
  // Whether field holds a reference (null or not) that a member visitor can
  // follow: both of its columns hold data.
  bool ObjIsPresent(cls_FieldHandle const& field) const;

  // A member of one of the storable types (see cls_MementoRead::Read);
  // type chooses the type and is the answer without a row.
  template <class T>
  T Read(cls_FieldHandle const& field, T const& type) const {
    static_assert(!std::is_enum_v<T>, "an enumeration persists as its text: read a cow_String");
    return m_Memento != nullptr ? m_Memento->Read(field, type) : type;
  }

  // The shared value field refers to, as a cow_COW<T, Policy>.
  template <class T, class Policy = cow_Direct<T>>
  cow_COW<T, Policy> ReadObjCow(cls_FieldHandle const& field) const {
    if (m_Memento == nullptr) return cow_COW<T, Policy>();
    return m_Memento->ReadObjCow(field, cls_ClassIdOf<T>::kValue).template As<T, Policy>();
  }
  // The object field refers to; null for a null reference.
  template <class T>
  T* ReadObjPtr(cls_FieldHandle const& field) const {
    if (m_Memento == nullptr) return nullptr;
    return static_cast<T*>(m_Memento->ReadObjPtr(field, cls_ClassIdOf<T>::kValue));
  }

  // The row's memento, on which the object layer's Make... operations are
  // called; null without a row.
  cls_MementoRead* Memento() const { return m_Memento; }

private:
  cls_MementoRead* m_Memento = nullptr;
  // Holds the memento when the visitors own it; its count is the number of
  // visitors sharing it.
  cow_CountedHld<cls_MementoRead> m_Owner;
};

#endif
