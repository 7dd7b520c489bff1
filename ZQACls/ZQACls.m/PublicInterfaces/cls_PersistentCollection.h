#ifndef cls_PersistentCollection_h
#define cls_PersistentCollection_h

#include "cls_AgentBlob.h"
#include "cls_AttributeType.h"
#include "cls_ClassIdOf.h"
#include "cls_ClassMetadata.h"
#include "cls_ClassRegistrar.h"
#include "cls_CollectionClass.h"
#include "cls_CollectionType.h"
#include "cls_CowValue.h"
#include "cls_MementoRead.h"
#include "cls_MementoWrite.h"
#include "cls_PersistentMember.h"
#include "cls_ReadListObj.h"
#include "cls_ReadListPrim.h"
#include "cls_Received.h"
#include "cls_Uid.h"
#include "cls_WriteListObj.h"
#include "cls_WriteListPrim.h"
#include "cow_COW.h"
#include "cow_String.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

// The members of cls_Persistent<T> that are collections. Each is stored as
// an object of one of the object layer's collection classes, which the
// owner's row refers to like an object member (cls_CollectionClass.h): a
// list of values as an array, a list of objects as a list of references, a
// blob as a byte space. Rewriting the owner rewrites its collections in
// place. A row of a table that lacks the member (a file of an older class
// version) leaves it as T's default constructor made it; a null reference
// reads as an empty collection.

// The element types of a list of values.
template <class E>
constexpr bool cls_IsListElement =
    std::is_same_v<E, int> || std::is_same_v<E, unsigned int> || std::is_same_v<E, double> ||
    std::is_same_v<E, float> || std::is_same_v<E, cow_String> || std::is_same_v<E, bool>;

// The row of the collection a member of the owner visitor refers to, for
// writing: StartWrite on a member visitor of the collection's class. The
// collection has no identity of its own (null): the object layer reuses the
// row the owner's row already refers to.
class cls_CollectionWriteRow {
public:
  cls_CollectionWriteRow(cls_WriteVisitor const& owner, cls_FieldHandle const& field, unsigned int collectionClass,
                         cls_CollectionType implemented)
      : m_Visitor(owner, field, nullptr, nullptr) {
    if (m_Visitor.StartWrite(collectionClass, m_Anonymous)) m_Visitor.CheckCollectionType(implemented);
  }
  // Null when there is nothing to write: the owner has no row.
  cls_MementoWrite* Memento() const { return m_Visitor.Memento(); }

private:
  // Declared first: the object layer may tie a history entry to it while
  // the visitor writes.
  cls_Uid const m_Anonymous;
  cls_WriteVisitor m_Visitor;
};

// The row of the collection field refers to, for reading, which must be of
// the collection class collectionClass; no memento when the owner's row
// holds no reference there (missing member or column) or a null one.
class cls_CollectionReadRow {
public:
  cls_CollectionReadRow(cls_ReadVisitor const& owner, cls_FieldHandle const& field, unsigned int collectionClass)
      : m_Present(owner.ObjIsPresent(field)),
        m_Visitor(m_Present ? cls_ReadVisitor::Collection(owner, field, collectionClass) : cls_ReadVisitor(nullptr)) {}
  // Whether the owner's row has a reference in field at all.
  bool Present() const { return m_Present; }
  cls_MementoRead* Memento() const { return m_Visitor.Memento(); }

private:
  bool m_Present;
  cls_ReadVisitor m_Visitor;
};

// A member held as std::vector<E> of a list element type, stored in
// columns elements per logical row (the stored interpretation; the vector
// is flat).
template <class T, class E>
class cls_PersistentValueList : public cls_PersistentMember<T> {
  static_assert(cls_IsListElement<E>,
                "cls_Persistent: list elements are int, unsigned int, double, float, cow_String or bool");

public:
  cls_PersistentValueList(cls_FieldHandle const& field, std::vector<E> T::*member, int columns)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_kListClass, cls_CollListPrim),
        m_Member(member),
        m_Columns(columns) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    cls_CollectionWriteRow const row(visitor, this->Field(), cls_kListClass, cls_CollListPrim);
    if (row.Memento() == nullptr) return;
    cls_Received<cls_WriteListPrim<E>> writer(row.Memento()->MakeWriteListPrim(E(), m_Columns));
    std::vector<E> const& values = object.*m_Member;
    if (!writer || values.empty()) return;
    if constexpr (std::is_same_v<E, bool>) {
      // std::vector<bool> keeps no array of bool.
      std::unique_ptr<bool[]> flat(new bool[values.size()]);
      for (std::size_t i = 0; i < values.size(); ++i) flat[i] = values[i];
      writer->Write(flat.get(), static_cast<int>(values.size()));
    } else {
      writer->Write(values.data(), static_cast<int>(values.size()));
    }
  }

  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    cls_CollectionReadRow const row(visitor, this->Field(), cls_kListClass);
    if (!row.Present()) return;
    std::vector<E>& values = object.*m_Member;
    values.clear();
    if (row.Memento() == nullptr) return;
    cls_Received<cls_ReadListPrim<E>> reader(row.Memento()->MakeReadListPrim(E()));
    if (!reader) return;
    int const size = reader->Size();
    if (size <= 0) return;
    if constexpr (std::is_same_v<E, bool>) {
      std::unique_ptr<bool[]> flat(new bool[size]);
      int const read = reader->Read(flat.get(), size);
      values.assign(flat.get(), flat.get() + read);
    } else {
      values.resize(static_cast<std::size_t>(size));
      values.resize(static_cast<std::size_t>(reader->Read(values.data(), size)));
    }
  }

private:
  std::vector<E> T::*m_Member;
  int m_Columns;
};

// A member held as std::vector<cow_COW<U>>, a list of objects of the
// persistent class U; an empty handle is a null element and keeps its place.
template <class T, class U>
class cls_PersistentObjectList : public cls_PersistentMember<T> {
public:
  cls_PersistentObjectList(cls_FieldHandle const& field, std::vector<cow_COW<U>> T::*member)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_kListClass, cls_CollListObj), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    cls_CollectionWriteRow const row(visitor, this->Field(), cls_kListClass, cls_CollListObj);
    if (row.Memento() == nullptr) return;
    cls_Received<cls_WriteListObj> writer(row.Memento()->MakeWriteListObj(1));
    if (!writer) return;
    unsigned int const cid = cls_ClassIdOf<U>::kValue;
    cls_ClassMetadata const& metadata = row.Memento()->Registrar().ConstGet(cid);
    for (cow_COW<U> const& element : object.*m_Member) {
      if (!element.HasValue()) {
        writer->MakeNullObj(cid);
        continue;
      }
      cls_CowValue const value(element);
      metadata.DBWrite(value.Address(), cls_WriteVisitor(*writer, &value, nullptr));
    }
  }

  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    cls_CollectionReadRow const row(visitor, this->Field(), cls_kListClass);
    if (!row.Present()) return;
    std::vector<cow_COW<U>>& elements = object.*m_Member;
    elements.clear();
    if (row.Memento() == nullptr) return;
    cls_Received<cls_ReadListObj> reader(row.Memento()->MakeReadListObj());
    if (!reader) return;
    elements.reserve(static_cast<std::size_t>(reader->Size()));
    while (reader->Next()) elements.push_back(reader->ReadObjCow(cls_ClassIdOf<U>::kValue).template As<U>());
  }

private:
  std::vector<cow_COW<U>> T::*m_Member;
};

// A member held as std::vector<char>: a blob, bytes the object layer does
// not interpret.
template <class T>
class cls_PersistentBlob : public cls_PersistentMember<T> {
public:
  cls_PersistentBlob(cls_FieldHandle const& field, std::vector<char> T::*member)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_kBlobClass, cls_CollBlob), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    cls_CollectionWriteRow const row(visitor, this->Field(), cls_kBlobClass, cls_CollBlob);
    if (row.Memento() == nullptr) return;
    cls_Received<cls_AgentBlob> blob(row.Memento()->MakeAgentBlob());
    std::vector<char> const& bytes = object.*m_Member;
    if (!blob) return;
    // A blob the row holds already is written over from its start; a
    // shorter one leaves no old bytes behind.
    blob->Seek(0);
    for (std::size_t done = 0; done < bytes.size();) {
      int const chunk = static_cast<int>(std::min<std::size_t>(bytes.size() - done, kChunk));
      blob->Write(bytes.data() + done, chunk);
      done += static_cast<std::size_t>(chunk);
    }
    blob->Truncate();
  }

  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    cls_CollectionReadRow const row(visitor, this->Field(), cls_kBlobClass);
    if (!row.Present()) return;
    std::vector<char>& bytes = object.*m_Member;
    bytes.clear();
    if (row.Memento() == nullptr) return;
    cls_Received<cls_AgentBlob> blob(row.Memento()->MakeAgentBlob());
    if (!blob) return;
    bytes.resize(static_cast<std::size_t>(blob->Length()));
    blob->Seek(0);
    // A blob may be longer than one call moves.
    std::size_t done = 0;
    while (done < bytes.size()) {
      int const chunk = static_cast<int>(std::min<std::size_t>(bytes.size() - done, kChunk));
      int const read = blob->Read(bytes.data() + done, chunk);
      if (read <= 0) break;
      done += static_cast<std::size_t>(read);
    }
    bytes.resize(done);
  }

private:
  static constexpr std::size_t kChunk = std::size_t(1) << 30;

  std::vector<char> T::*m_Member;
};

#endif
