#ifndef cls_PersistentMetadata_h
#define cls_PersistentMetadata_h

#include "ZQABasAssert.h"
#include "cls_AttributeType.h"
#include "cls_ClassMetadata.h"
#include "cls_CowDtor.h"
#include "cls_PersistentMember.h"
#include "cls_ReadVisitor.h"
#include "cls_Uid.h"
#include "cls_WriteVisitor.h"
#include "cow_String.h"

#include <memory>
#include <utility>
#include <vector>

// The metadata of a class T declared through cls_Persistent<T>: its
// attributes are the declared members, its DBWrite and Ctor write and read
// them, its values are held in cow_COW<T>. T is built default-constructed,
// then given its identity and members.
//
// Invariant: m_Members are the attributes, in declaration order, and each
// is this metadata's attribute of the same field.
template <class T>
class cls_PersistentMetadata : public cls_ClassMetadata {
public:
  using Members = std::vector<std::shared_ptr<cls_PersistentMember<T> const>>;

  cls_PersistentMetadata(cow_String const& name, unsigned int classId, int version, cls_Uid T::*identity,
                         Members members)
      : cls_ClassMetadata(name, classId, version, &BuiltByCtor, cls_kNoClass),
        m_Identity(identity),
        m_Members(std::move(members)) {
    for (auto const& member : m_Members) AddAttribute(member->Field(), member->Type(), member->TargetClass(), member->Collection());
    AddDtor(&cls_CowDtor<T>);
  }

  void DBWrite(void const* object, cls_WriteVisitor const& visitor) const override {
    T const& written = *static_cast<T const*>(object);
    if (!visitor.StartWrite(ClassId(), written.*m_Identity)) return;
    for (auto const& member : m_Members) member->Write(written, visitor);
  }

  void Delete(void* object) const override { delete static_cast<T*>(object); }

  void* Ctor(cls_ReadVisitor const& visitor) const override {
    auto built = std::make_unique<T>();
    (*built).*m_Identity = visitor.GetUid();
    for (auto const& member : m_Members) member->Read(*built, visitor);
    return built.release();
  }

private:
  // The base class answers HasCtor by the constructor function it keeps;
  // objects of this class are built by the Ctor above, which needs the
  // members, so this function only marks the class as one that is built.
  static void* BuiltByCtor(cls_ReadVisitor const&) {
    nex_ThrowAssertion("ZQACls/ZQACls.m/PublicInterfaces/cls_PersistentMetadata", __LINE__,
                       "cls_PersistentMetadata - objects are built by Ctor");
  }

  cls_Uid T::*m_Identity;
  Members m_Members;
};

#endif
