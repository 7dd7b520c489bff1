#ifndef cls_PersistentMember_h
#define cls_PersistentMember_h

#include "cls_AttributeType.h"
#include "cls_ClassIdOf.h"
#include "cls_CollectionType.h"
#include "cls_FieldHandle.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "cow_COW.h"
#include "cow_String.h"

// The attribute type of a member held as a value of C++ type M; only the
// storable types have one.
template <class M>
struct cls_PersistentValueType {
  static_assert(sizeof(M) == 0,
                "cls_Persistent: members are int, unsigned int, bool, float, double, cow_String "
                "or cow_COW of a persistent class");
};
template <>
struct cls_PersistentValueType<int> {
  static constexpr cls_AttributeType kType = cls_AttrInt;
};
template <>
struct cls_PersistentValueType<unsigned int> {
  static constexpr cls_AttributeType kType = cls_AttrUnsignedInt;
};
template <>
struct cls_PersistentValueType<bool> {
  static constexpr cls_AttributeType kType = cls_AttrBool;
};
template <>
struct cls_PersistentValueType<float> {
  static constexpr cls_AttributeType kType = cls_AttrFloat;
};
template <>
struct cls_PersistentValueType<double> {
  static constexpr cls_AttributeType kType = cls_AttrDouble;
};
template <>
struct cls_PersistentValueType<cow_String> {
  static constexpr cls_AttributeType kType = cls_AttrString;
};

// One member of a class declared through cls_Persistent<T>: the attribute it
// is registered as, and how it is written and read through the visitors.
template <class T>
class cls_PersistentMember {
public:
  cls_PersistentMember(cls_FieldHandle const& field, cls_AttributeType type, unsigned int targetClass,
                       cls_CollectionType collection = cls_CollNone)
      : m_Field(field), m_Type(type), m_TargetClass(targetClass), m_Collection(collection) {}
  cls_PersistentMember(cls_PersistentMember const&) = delete;
  cls_PersistentMember& operator=(cls_PersistentMember const&) = delete;
  virtual ~cls_PersistentMember() = default;

  cls_FieldHandle const& Field() const { return m_Field; }
  cls_AttributeType Type() const { return m_Type; }
  unsigned int TargetClass() const { return m_TargetClass; }
  cls_CollectionType Collection() const { return m_Collection; }

  virtual void Write(T const& object, cls_WriteVisitor const& visitor) const = 0;
  virtual void Read(T& object, cls_ReadVisitor const& visitor) const = 0;

private:
  cls_FieldHandle m_Field;
  cls_AttributeType m_Type;
  unsigned int m_TargetClass;
  cls_CollectionType m_Collection;
};

// A member held as a value of a storable type M. A row of a table that lacks
// the field (a file of an older class version) leaves the member as T's
// default constructor made it.
template <class T, class M>
class cls_PersistentValue : public cls_PersistentMember<T> {
public:
  cls_PersistentValue(cls_FieldHandle const& field, M T::*member)
      : cls_PersistentMember<T>(field, cls_PersistentValueType<M>::kType, cls_kNoClass), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    visitor.Write(this->Field(), object.*m_Member);
  }
  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    if (visitor.FieldIsPresent(this->Field())) object.*m_Member = visitor.Read(this->Field(), M());
  }

private:
  M T::*m_Member;
};

// A member that refers to an object of the persistent class U, shared
// copy-on-write; a missing or null reference reads as an empty handle.
template <class T, class U>
class cls_PersistentReference : public cls_PersistentMember<T> {
public:
  cls_PersistentReference(cls_FieldHandle const& field, cow_COW<U> T::*member)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_ClassIdOf<U>::kValue), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    visitor.WriteObj(this->Field(), object.*m_Member);
  }
  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    object.*m_Member = visitor.ReadObjCow<U>(this->Field());
  }

private:
  cow_COW<U> T::*m_Member;
};

#endif
