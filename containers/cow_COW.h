#ifndef cow_COW_h
#define cow_COW_h

#include "cow_CountedHld.h"

#include <memory>

// Copy policy that copies a referent of known static type.
template <class T>
struct cow_Direct {
  static T* Copy(T const& source) { return new T(source); }
};

// Copy policy for a referent reached through a base class: T's own virtual
// Copy() keeps the dynamic type.
template <class T>
struct cow_Virtual {
  static T* Copy(T const& source) { return source.Copy(); }
};

// A copy-on-write handle: copies share the referent until one of them asks
// for write access with Get(), which first gives that handle a private copy.
template <class T, class Policy = cow_Direct<T> >
class cow_COW : public cow_CountedHld<T> {
  using Base = cow_CountedHld<T>;

public:
  cow_COW() = default;
  explicit cow_COW(T* referent) : Base(referent) {}
  explicit cow_COW(T const& value) : Base(Policy::Copy(value)) {}

  cow_COW& operator=(T* referent) {
    Base::operator=(referent);
    return *this;
  }

  // Write access: the referent, made private to this handle first. The copy
  // is made before anything changes, so a copy that throws leaves the handle
  // as it was.
  T* Get() {
    if (this->m_Referent == nullptr || this->Exclusive()) return this->m_Referent;
    std::unique_ptr<T> copy(Policy::Copy(*this->m_Referent));
    if (this->m_Count && *this->m_Count > 1) {
      std::int32_t* fresh = Base::NewCount();
      --*this->m_Count;
      this->m_Count = fresh;
    } else if (this->m_Count) {
      // The copy released the other owners: the old referent is ours to end.
      delete this->m_Referent;
    } else {
      this->m_Count = Base::NewCount();
    }
    this->m_Referent = copy.release();
    return this->m_Referent;
  }

  bool Identical(cow_COW const& other) const { return this->m_Referent == other.m_Referent; }
};

#endif
