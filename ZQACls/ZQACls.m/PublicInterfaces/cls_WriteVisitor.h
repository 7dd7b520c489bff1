#ifndef cls_WriteVisitor_h
#define cls_WriteVisitor_h

#include "ZQABasExport.h"
#include "cls_ClassIdOf.h"
#include "cls_CollectionType.h"
#include "cls_CowValue.h"
#include "cls_FieldHandle.h"
#include "cls_MementoWrite.h"
#include "cow_COW.h"

#include <type_traits>

class cls_AgentListObj;
class cls_AgentRequest;
class cls_Uid;
class cls_WriteListObj;

// What an object's DBWrite is handed: the way to the row its members go to.
// A visitor is built for one object: as the root of a write on a memento
// the object layer made, for an object member of a parent's object (on the
// parent's visitor and the member's field), or for the base class part of
// the parent's object. StartWrite asks the parent's memento for the row in
// the way that fits how the visitor was built: MakeWriteObj for a member
// given as a copy-on-write value (or as nothing), MakeWriteObjWithPtr for a
// member given by address only, MakeBaseWriteObj for a base part. The root
// visitor already has its row.
//
// Invariant: m_Memento is the row's memento once StartWrite has answered
// true (for the root, from the start); the visitor deletes it at its end if
// NeedsDeletion() said so. A visitor lives within its parent's DBWrite, so
// its parent outlives it.
class ZQA_EXPORT cls_WriteVisitor {
public:
  // The root of a write: the object's row is memento's, which may be null
  // when there is nothing to write.
  explicit cls_WriteVisitor(cls_MementoWrite* memento);
  // The object in parent's member field, given as a copy-on-write value
  // (cow) or by address (ptr), either or both may be null.
  cls_WriteVisitor(cls_WriteVisitor const& parent, cls_FieldHandle const& field, cls_CowValue const* cow,
                   void const* ptr);
  // The same for a member held copy-on-write, as DBWrite code writes it.
  cls_WriteVisitor(cls_WriteVisitor const& parent, cls_FieldHandle const& field, cls_CowValue const& cow);
  // The part of parent's object that belongs to its base class baseClass.
  cls_WriteVisitor(cls_WriteVisitor const& parent, unsigned int baseClass);
  // The object appended to list, or stored as element index of agent, given
  // as a copy-on-write value or by address; either or both may be null.
  cls_WriteVisitor(cls_WriteListObj& list, cls_CowValue const* cow, void const* ptr);
  cls_WriteVisitor(cls_AgentListObj& agent, int index, cls_CowValue const* cow, void const* ptr);
  // The object of the element that request names (a map's entry), which
  // outlives the visitor.
  cls_WriteVisitor(cls_AgentRequest const& request, cls_CowValue const* cow, void const* ptr);
  cls_WriteVisitor(cls_WriteVisitor const&) = delete;
  cls_WriteVisitor& operator=(cls_WriteVisitor const&) = delete;
  ~cls_WriteVisitor();

  // Finds or makes the row of the object of class cid and identity uid.
  // False when nothing more is to be written: the object is stored already
  // or its class has no table; DBWrite then returns at once.
  bool StartWrite(unsigned int cid, cls_Uid const& uid) const;

  // Writes a member of one of the storable types: bool, char, unsigned char,
  // short, unsigned short, int, unsigned int, float, double, cow_String.
  template <class T>
  void Write(cls_FieldHandle const& field, T const& value) const {
    static_assert(!std::is_enum_v<T>, "an enumeration persists as its text: write a cow_String");
    static_assert(!std::is_pointer_v<T> && !std::is_array_v<T>, "write text as a cow_String");
    Row().Write(field, value);
  }
  void WriteNullObj(cls_FieldHandle const& field) const;
  // Writes the object that value holds in field through its class's
  // registered metadata (its own DBWrite, or cls_Persistent's members), so
  // that the object layer stores a shared value once; an empty value is
  // written as a null reference. The object is written as a U: a hierarchy
  // held through its base writes an object with the object's own (virtual)
  // DBWrite on a member visitor instead.
  template <class U, class Policy>
  void WriteObj(cls_FieldHandle const& field, cow_COW<U, Policy> const& value) const {
    WriteObjOfClass(field, cls_CowValue(value), cls_ClassIdOf<U>::kValue);
  }

  // Raises when implemented is not the collection the parent's class
  // declares for this visitor's member. A root or base part visitor writes no
  // member of a declaring class, and checks nothing.
  void CheckCollectionType(cls_CollectionType implemented) const;
  // The row's memento, on which the object layer's Make... operations are
  // called; null before StartWrite or when it answered false.
  cls_MementoWrite* Memento() const { return m_Memento; }

private:
  enum class Form { kRoot, kMember, kBase, kElement };

  cls_MementoWrite& Row() const;
  void WriteObjOfClass(cls_FieldHandle const& field, cls_CowValue const& value, unsigned int cid) const;
  cls_MementoWrite* MakeElementRow(unsigned int cid, cls_Uid const& uid) const;

  Form m_Form;
  cls_WriteVisitor const* m_Parent = nullptr;
  cls_FieldHandle m_Field;
  cls_CowValue m_Cow;
  void const* m_Pointer = nullptr;
  unsigned int m_BaseClass = 0;
  cls_WriteListObj* m_List = nullptr;
  cls_AgentListObj* m_Agent = nullptr;
  cls_AgentRequest const* m_Request = nullptr;
  int m_Index = 0;
  mutable cls_MementoWrite* m_Memento = nullptr;
  mutable bool m_Started = false;
};

#endif
