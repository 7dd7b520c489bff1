#ifndef cls_PersistentMap_h
#define cls_PersistentMap_h

#include "cls_AgentRequest.h"
#include "cls_ClassIdOf.h"
#include "cls_ClassMetadata.h"
#include "cls_ClassRegistrar.h"
#include "cls_CollectionClass.h"
#include "cls_PersistentCollection.h"
#include "cls_ReadMapKey2Obj.h"
#include "cls_ReadMapKey2Prim.h"
#include "cls_WriteMapKey2Obj.h"
#include "cls_WriteMapKey2Prim.h"
#include "cow_COW.h"
#include "cow_String.h"

#include <map>
#include <type_traits>

// The members of cls_Persistent<T> that are maps, held as std::map and
// stored like the other collections (cls_PersistentCollection.h) as an
// object of the map collection class whose row holds the entries' table.
// Keys are int, unsigned int (stored as the int of the same bits) or
// cow_String; values are double, float, int, unsigned int, cow_String, or
// objects of a persistent class held as cow_COW<U>. Reading takes the first
// entry of a key that holds a value, as the object layer's map agent does.

template <class K>
constexpr bool cls_IsMapKey =
    std::is_same_v<K, int> || std::is_same_v<K, unsigned int> || std::is_same_v<K, cow_String>;
template <class V>
constexpr bool cls_IsMapValue = std::is_same_v<V, double> || std::is_same_v<V, float> || std::is_same_v<V, int> ||
                                std::is_same_v<V, unsigned int> || std::is_same_v<V, cow_String>;

// How a key of type K is stored: strings as strings, integers as int.
template <class K>
struct cls_MapKey {
  static_assert(cls_IsMapKey<K>, "cls_Persistent: map keys are int, unsigned int or cow_String");
  static constexpr bool kString = std::is_same_v<K, cow_String>;
  using Stored = std::conditional_t<kString, cow_String, int>;
  static Stored Store(K const& key) { return static_cast<Stored>(key); }
  static K Load(Stored const& key) { return static_cast<K>(key); }
};

// A member held as std::map<K, V> of values.
template <class T, class K, class V>
class cls_PersistentValueMap : public cls_PersistentMember<T> {
  static_assert(cls_IsMapValue<V>, "cls_Persistent: map values are double, float, int, unsigned int or cow_String");
  using Key = cls_MapKey<K>;
  static constexpr cls_CollectionType kType = Key::kString ? cls_CollMapString2Prim : cls_CollMapInt2Prim;

public:
  cls_PersistentValueMap(cls_FieldHandle const& field, std::map<K, V> T::*member)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_kMapClass, kType), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    cls_CollectionWriteRow const row(visitor, this->Field(), cls_kMapClass, kType);
    if (row.Memento() == nullptr) return;
    cls_Received<cls_WriteMapKey2Prim<typename Key::Stored, V>> writer(MakeWriter(*row.Memento()));
    if (!writer) return;
    for (auto const& [key, value] : object.*m_Member) writer->Write(Key::Store(key), value);
  }

  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    cls_CollectionReadRow const row(visitor, this->Field(), cls_kMapClass);
    if (!row.Present()) return;
    std::map<K, V>& entries = object.*m_Member;
    entries.clear();
    if (row.Memento() == nullptr) return;
    cls_Received<cls_ReadMapKey2Prim<typename Key::Stored, V>> reader(MakeReader(*row.Memento()));
    if (!reader) return;
    while (reader->Next()) entries.emplace(Key::Load(reader->ReadKey()), reader->Read());
  }

private:
  static auto MakeWriter(cls_MementoWrite& memento) {
    if constexpr (Key::kString)
      return memento.MakeWriteMapString2Prim(V());
    else
      return memento.MakeWriteMapInt2Prim(V());
  }
  static auto MakeReader(cls_MementoRead& memento) {
    if constexpr (Key::kString)
      return memento.MakeReadMapString2Prim(V());
    else
      return memento.MakeReadMapInt2Prim(V());
  }

  std::map<K, V> T::*m_Member;
};

// A member held as std::map<K, cow_COW<U>>, objects of the persistent class
// U; an empty handle is a null entry and keeps its key.
template <class T, class K, class U>
class cls_PersistentObjectMap : public cls_PersistentMember<T> {
  using Key = cls_MapKey<K>;
  using Stored = typename Key::Stored;
  static constexpr cls_CollectionType kType = Key::kString ? cls_CollMapString2Obj : cls_CollMapInt2Obj;

public:
  cls_PersistentObjectMap(cls_FieldHandle const& field, std::map<K, cow_COW<U>> T::*member)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_kMapClass, kType), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    cls_CollectionWriteRow const row(visitor, this->Field(), cls_kMapClass, kType);
    if (row.Memento() == nullptr) return;
    cls_Received<cls_WriteMapKey2Obj<Stored>> writer(MakeWriter(*row.Memento()));
    if (!writer) return;
    unsigned int const cid = cls_ClassIdOf<U>::kValue;
    cls_ClassMetadata const& metadata = row.Memento()->Registrar().ConstGet(cid);
    for (auto const& [key, element] : object.*m_Member) {
      if (!element.HasValue()) {
        writer->MakeNullObj(Key::Store(key), cid);
        continue;
      }
      cls_CowValue const value(element);
      cls_WriteRequestMapKey2Obj<Stored> const entry(*writer, Key::Store(key));
      metadata.DBWrite(value.Address(), cls_WriteVisitor(entry, &value, nullptr));
    }
  }

  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    cls_CollectionReadRow const row(visitor, this->Field(), cls_kMapClass);
    if (!row.Present()) return;
    std::map<K, cow_COW<U>>& entries = object.*m_Member;
    entries.clear();
    if (row.Memento() == nullptr) return;
    cls_Received<cls_ReadMapKey2Obj<Stored>> reader(MakeReader(*row.Memento()));
    if (!reader) return;
    while (reader->Next()) {
      cow_COW<U>& entry = entries[Key::Load(reader->ReadKey())];
      // A key's first entry with an object wins; a null one is replaced by
      // a later entry that has an object.
      if (!entry.HasValue()) entry = reader->ReadObjCow(cls_ClassIdOf<U>::kValue).template As<U>();
    }
  }

private:
  static cls_WriteMapKey2Obj<Stored>* MakeWriter(cls_MementoWrite& memento) {
    if constexpr (Key::kString)
      return memento.MakeWriteMapString2Obj();
    else
      return memento.MakeWriteMapInt2Obj();
  }
  static cls_ReadMapKey2Obj<Stored>* MakeReader(cls_MementoRead& memento) {
    if constexpr (Key::kString)
      return memento.MakeReadMapString2Obj();
    else
      return memento.MakeReadMapInt2Obj();
  }

  std::map<K, cow_COW<U>> T::*m_Member;
};

#endif
