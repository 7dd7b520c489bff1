#ifndef cls_Persistent_h
#define cls_Persistent_h

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ClassRegistrar.h"
#include "cls_Lazy.h"
#include "cls_PersistentCollection.h"
#include "cls_PersistentLazy.h"
#include "cls_PersistentMap.h"
#include "cls_PersistentMember.h"
#include "cls_PersistentMetadata.h"
#include "cls_Uid.h"
#include "cow_COW.h"
#include "cow_String.h"

#include <memory>
#include <type_traits>
#include <vector>

// The typed helper: a class whose members are plain values and references
// declares them once, and needs no visitor code of its own:
//
//   cls_Persistent<Material>("Material", Material::kClassId, 1)
//       .Identity(&Material::uid)
//       .Member(1, "Name", &Material::name)
//       .Register(registrar);
//
// The attribute type follows from the member's C++ type (int, unsigned int,
// bool, float, double, cow_String, or cow_COW<U> of a persistent U, a
// reference to U's class, or cls_Lazy<U>, the same reference loaded only
// when asked for); std::vector of int, unsigned int, double, float,
// cow_String or bool is a list of values, std::vector<cow_COW<U>> a list of
// objects, std::vector<char> a blob; std::map from int, unsigned int or
// cow_String to double, float, int, unsigned int, cow_String or cow_COW<U>
// is a map. The class has no base class, is default
// constructible, and is held in cow_COW<T> where it is shared.
//
// Invariant: no two members share a field id or a name. A description is a
// value: copies share the members, which never change once declared.
template <class T>
class cls_Persistent {
  static_assert(std::is_default_constructible_v<T>, "cls_Persistent<T> builds T default-constructed");

public:
  cls_Persistent(cow_String const& name, unsigned int classId, int version)
      : m_Name(name), m_ClassId(classId), m_Version(version) {}

  // The member that holds the object's identity.
  cls_Persistent& Identity(cls_Uid T::*uid) {
    m_Identity = uid;
    return *this;
  }

  template <class M>
  cls_Persistent& Member(int fieldId, cow_String const& name, M T::*member) {
    return Add(std::make_shared<cls_PersistentValue<T, M> const>(cls_FieldHandle(fieldId, name), member));
  }
  template <class U>
  cls_Persistent& Member(int fieldId, cow_String const& name, cow_COW<U> T::*member) {
    return Add(std::make_shared<cls_PersistentReference<T, U> const>(cls_FieldHandle(fieldId, name), member));
  }
  // A reference read only when asked for (cls_Lazy), stored as the one above.
  template <class U>
  cls_Persistent& Member(int fieldId, cow_String const& name, cls_Lazy<U> T::*member) {
    return Add(std::make_shared<cls_PersistentLazy<T, U> const>(cls_FieldHandle(fieldId, name), member));
  }

  // A list of values, stored columns elements per logical row.
  template <class E>
  cls_Persistent& Member(int fieldId, cow_String const& name, std::vector<E> T::*member, int columns = 1) {
    return Add(std::make_shared<cls_PersistentValueList<T, E> const>(cls_FieldHandle(fieldId, name), member,
                                                                    columns));
  }
  template <class U>
  cls_Persistent& Member(int fieldId, cow_String const& name, std::vector<cow_COW<U>> T::*member) {
    return Add(std::make_shared<cls_PersistentObjectList<T, U> const>(cls_FieldHandle(fieldId, name), member));
  }
  cls_Persistent& Member(int fieldId, cow_String const& name, std::vector<char> T::*member) {
    return Add(std::make_shared<cls_PersistentBlob<T> const>(cls_FieldHandle(fieldId, name), member));
  }
  template <class K, class V>
  cls_Persistent& Member(int fieldId, cow_String const& name, std::map<K, V> T::*member) {
    return Add(std::make_shared<cls_PersistentValueMap<T, K, V> const>(cls_FieldHandle(fieldId, name), member));
  }
  template <class K, class U>
  cls_Persistent& Member(int fieldId, cow_String const& name, std::map<K, cow_COW<U>> T::*member) {
    return Add(std::make_shared<cls_PersistentObjectMap<T, K, U> const>(cls_FieldHandle(fieldId, name), member));
  }

  // Registers the class's metadata; raises when no identity was declared.
  cls_ClassMetadata& Register(cls_ClassRegistrar& registrar) const {
    if (m_Identity == nullptr)
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate("cls_Persistent::Register - Class %s declares no "
                                                          "identity."),
                                            m_Name));
    return registrar.AddClassMD(new cls_PersistentMetadata<T>(m_Name, m_ClassId, m_Version, m_Identity, m_Members));
  }

private:
  static constexpr char const kSourcePath[] = "ZQACls/ZQACls.m/PublicInterfaces/cls_Persistent";

  cls_Persistent& Add(std::shared_ptr<cls_PersistentMember<T> const> member) {
    for (auto const& declared : m_Members)
      if (declared->Field().FieldId() == member->Field().FieldId() ||
          declared->Field().Name() == member->Field().Name())
        nex_ThrowMessage(kSourcePath, __LINE__,
                         atr_SubstituteFormat(atr_translate("cls_Persistent::Member - Class %s declares field %d "
                                                            "%s, whose id or name it has declared already."),
                                              m_Name, member->Field().FieldId(), member->Field().Name()));
    m_Members.push_back(std::move(member));
    return *this;
  }

  cow_String m_Name;
  unsigned int m_ClassId;
  int m_Version;
  cls_Uid T::*m_Identity = nullptr;
  typename cls_PersistentMetadata<T>::Members m_Members;
};

#endif
