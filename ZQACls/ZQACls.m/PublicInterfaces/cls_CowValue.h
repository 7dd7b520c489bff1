#ifndef cls_CowValue_h
#define cls_CowValue_h

#include "ZQABasExport.h"
#include "cls_ClassIdOf.h"
#include "cow_COW.h"

#include <cstdint>
#include <type_traits>
#include <typeinfo>

class cls_ClassMetadata;

// A copy-on-write value of any persistent class, with its type erased: what
// the object layer's cache holds and what passes through the mementos. It
// shares its referent and count with the cow_COW handles it came from or
// gives out, so ReferenceCount() counts the application's handles and the
// cache's values alike: a value that only the cache holds has a count of 1.
//
// A value comes from a cow_COW<T, Policy> (it shares that handle's referent)
// or from an object that a class's metadata built (it adopts the object and
// ends it with the metadata's Delete when the last share goes; the metadata
// must outlive the value, as a registrar outlives its transporters).
//
// A value is asked for by the exact handle type it holds: As<T, Policy>()
// answers only when the value came from a cow_COW<T, Policy>, or was built
// by the metadata of T's class (cls_ClassIdOf<T>) and Policy is
// cow_Direct<T>. A value of a derived class is not given out as a base:
// cow_COW<Base> copies a Base on write, which would slice a derived referent.
// A hierarchy that is shared through its base is held as
// cow_COW<Base, cow_Virtual<Base>> everywhere, and asked for as that.
//
// Invariant: m_Count is null exactly for an empty value; otherwise it is a
// count of at least 1 shared with cow_CountedHld, and m_Kind or m_Metadata
// (one of the two) says how the referent ends. Counts are plain integers: a
// value and the handles it shares with live on one thread.
class ZQA_EXPORT cls_CowValue {
public:
  cls_CowValue() noexcept = default;

  template <class T, class Policy>
  explicit cls_CowValue(cow_COW<T, Policy> const& value) {
    Handle<T, Policy> share(value);
    m_Referent = share.GetPtr();
    m_Count = share.TakeShare();
    // A handle that dropped its reference has no count: the value is empty.
    if (m_Count != nullptr) m_Kind = &KindOf<T, Policy>::kKind;
  }

  // Adopts object, a new object that metadata's Ctor built (null for none).
  cls_CowValue(void* object, cls_ClassMetadata const& metadata);

  cls_CowValue(cls_CowValue const& other) noexcept;
  cls_CowValue& operator=(cls_CowValue const& other) noexcept;
  ~cls_CowValue() { Reset(); }

  bool HasValue() const { return m_Referent != nullptr; }
  // The referent's address: the key under which the cache finds the value.
  void const* Address() const { return m_Referent; }
  // How many handles and values share the referent; 0 for an empty value.
  std::int32_t ReferenceCount() const { return m_Count ? *m_Count : 0; }

  template <class T, class Policy = cow_Direct<T>>
  bool Holds() const {
    if (m_Count == nullptr) return false;
    if (m_Kind != nullptr) return *m_Kind->m_Type == typeid(cow_COW<T, Policy>);
    if constexpr (cls_HasClassId<T>::value && std::is_same_v<Policy, cow_Direct<T>>)
      return BuiltBy(cls_ClassIdOf<T>::kValue);
    return false;
  }

  // The value as the handle type it holds, sharing its referent; an empty
  // handle for an empty value. Raises for a value of another type.
  template <class T, class Policy = cow_Direct<T>>
  cow_COW<T, Policy> As() const {
    if (m_Count == nullptr) return cow_COW<T, Policy>();
    if (!Holds<T, Policy>()) RaiseNotHeld(typeid(cow_COW<T, Policy>));
    Handle<T, Policy> handle;
    handle.Share(m_Count, static_cast<T*>(m_Referent));
    return handle;
  }

  // Gives up this value's share and leaves it empty.
  void Reset() noexcept;

private:
  // How a value taken from a cow_COW ends, and its handle type.
  struct Kind {
    std::type_info const* m_Type;
    void (*m_Delete)(void* referent);
  };
  template <class T, class Policy>
  struct KindOf {
    // As cow_CountedHld ends its referent.
    static void Delete(void* referent) { delete static_cast<T*>(referent); }
    static inline Kind const kKind{&typeid(cow_COW<T, Policy>), &Delete};
  };

  // A handle whose count and referent this class moves in and out: the
  // members are the counted holder's, reachable from a class derived from it.
  template <class T, class Policy>
  class Handle : public cow_COW<T, Policy> {
  public:
    Handle() = default;
    explicit Handle(cow_COW<T, Policy> const& value) : cow_COW<T, Policy>(value) {}
    // Hands this handle's share to the caller; the handle is left empty.
    std::int32_t* TakeShare() {
      std::int32_t* count = this->m_Count;
      this->m_Count = nullptr;
      this->m_Referent = nullptr;
      return count;
    }
    // Joins the share of count and referent.
    void Share(std::int32_t* count, T* referent) {
      this->DropReference();
      ++*count;
      this->m_Count = count;
      this->m_Referent = referent;
    }
  };

  bool BuiltBy(unsigned int classId) const;
  [[noreturn]] void RaiseNotHeld(std::type_info const& asked) const;

  std::int32_t* m_Count = nullptr;
  void* m_Referent = nullptr;
  Kind const* m_Kind = nullptr;
  cls_ClassMetadata const* m_Metadata = nullptr;
};

#endif
