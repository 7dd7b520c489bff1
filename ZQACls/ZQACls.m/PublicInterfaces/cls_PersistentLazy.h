#ifndef cls_PersistentLazy_h
#define cls_PersistentLazy_h

#include "cls_AgentProxy.h"
#include "cls_AttributeType.h"
#include "cls_ClassIdOf.h"
#include "cls_Lazy.h"
#include "cls_MementoRead.h"
#include "cls_MementoWrite.h"
#include "cls_PersistentMember.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <memory>

// A member of cls_Persistent<T> held as cls_Lazy<U>: registered and stored
// exactly as a cow_COW<U> member (cls_PersistentReference), so that a file
// written with the one reads with the other. Reading makes a proxy and
// reads nothing of U; writing stores a loaded value as a reference member
// does, and hands an unloaded one to the memento (CopyBranch), which writes
// its reference, into another database with a copy of its rows. A memento
// that can do neither reads or writes the object at once.
template <class T, class U>
class cls_PersistentLazy : public cls_PersistentMember<T> {
public:
  cls_PersistentLazy(cls_FieldHandle const& field, cls_Lazy<U> T::*member)
      : cls_PersistentMember<T>(field, cls_AttrObjectCow, cls_ClassIdOf<U>::kValue), m_Member(member) {}

  void Write(T const& object, cls_WriteVisitor const& visitor) const override {
    cls_Lazy<U> const& lazy = object.*m_Member;
    auto const* state = lazy.m_State.get();
    if (state != nullptr && !state->Loaded() && state->Proxy() != nullptr && visitor.Memento() != nullptr &&
        visitor.Memento()->CopyBranch(state->Proxy(), this->Field()))
      return;
    visitor.WriteObj(this->Field(), lazy.Get());
  }

  void Read(T& object, cls_ReadVisitor const& visitor) const override {
    cls_MementoRead* memento = visitor.Memento();
    std::unique_ptr<cls_AgentProxy> proxy(
        memento != nullptr ? memento->MakeAgentProxy(this->Field(), cls_ClassIdOf<U>::kValue) : nullptr);
    object.*m_Member =
        proxy != nullptr ? cls_Lazy<U>(std::move(proxy)) : cls_Lazy<U>(visitor.template ReadObjCow<U>(this->Field()));
  }

private:
  cls_Lazy<U> T::*m_Member;
};

#endif
