#ifndef cls_Lazy_h
#define cls_Lazy_h

#include "cls_AgentProxy.h"
#include "cls_ClassIdOf.h"
#include "cls_LazyState.h"
#include "cls_Uid.h"
#include "cow_COW.h"

#include <memory>
#include <utility>

template <class T, class U>
class cls_PersistentLazy;

// A member that refers to an object of the persistent class U and reads it
// only when asked: read from a database, it holds the stored object unloaded
// (a cls_AgentProxy) until the first Get, which builds it, once, as the
// database's cache keeps it. Written, it is stored as a cow_COW<U> member is,
// and an unloaded object goes into another database as a copy of its rows,
// without being built (cls_Persistent's Member for a cls_Lazy<U>).
//
// Copies share one state: an object loaded through one copy is loaded for
// all. The state lets the stored object go when its database closes: Get
// then raises unless the object was loaded before. Used on the database's
// thread.
//
// Invariant: m_State is null exactly when there is no value (nothing given,
// or a null reference read); the typed value in the state is set exactly
// when the state says Loaded().
template <class U>
class cls_Lazy {
public:
  // No value.
  cls_Lazy() = default;
  // A loaded value; an empty handle is no value.
  cls_Lazy(cow_COW<U> value) : m_State(value.HasValue() ? std::make_shared<State>(std::move(value)) : nullptr) {}

  // False for no value, and for a null reference read.
  bool HasValue() const { return m_State != nullptr; }
  // Whether the object is in memory (with no value, always).
  bool IsLoaded() const { return m_State == nullptr || m_State->IsLoaded(); }
  // The object, loaded at the first call; an empty handle for no value.
  // Raises the library's exception when loading fails, or when the database
  // closed before the object was loaded.
  cow_COW<U> const& Get() const {
    if (m_State == nullptr) return Empty();
    State& state = *m_State;
    if (!state.Loaded()) {
      state.m_Value = state.Load().template As<U>();
      state.MarkLoaded();
    }
    return state.m_Value;
  }
  // The stored object's identity, without loading it; null for no value and
  // for a value given in memory (whose own member holds its identity).
  // Raises when the database closed before the object was loaded or its
  // identity asked for.
  cls_Uid Uid() const { return m_State == nullptr ? cls_Uid() : m_State->Uid(); }

private:
  template <class T, class V>
  friend class cls_PersistentLazy;

  struct State : cls_LazyState {
    explicit State(cow_COW<U> value) : m_Value(std::move(value)) {}
    explicit State(std::unique_ptr<cls_AgentProxy> proxy)
        : cls_LazyState(std::move(proxy), cls_ClassIdOf<U>::kValue) {}
    cow_COW<U> m_Value;
  };

  // The object proxy stands for; no value for a proxy without one.
  explicit cls_Lazy(std::unique_ptr<cls_AgentProxy> proxy)
      : m_State(proxy->HasValue() ? std::make_shared<State>(std::move(proxy)) : nullptr) {}

  static cow_COW<U> const& Empty() {
    static cow_COW<U> const empty;
    return empty;
  }

  std::shared_ptr<State> m_State;
};

#endif
