#ifndef cow_ArrayCOW_h
#define cow_ArrayCOW_h

#include "cow_COW.h"

// The copy-on-write handle under the name used for container elements; it
// shares layout and rules with cow_COW.
template <class T, class Policy = cow_Direct<T> >
class cow_ArrayCOW : public cow_COW<T, Policy> {
  using Base = cow_COW<T, Policy>;

public:
  cow_ArrayCOW() = default;
  explicit cow_ArrayCOW(T const& value) : Base(value) {}
  explicit cow_ArrayCOW(T* referent) : Base(referent) {}

  cow_ArrayCOW& operator=(T* referent) {
    Base::operator=(referent);
    return *this;
  }
};

#endif
