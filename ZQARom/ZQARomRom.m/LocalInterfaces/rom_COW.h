#ifndef rom_COW_h
#define rom_COW_h

#include "mem_Alloc.h"
#include "rom_Counter.h"
#include "rom_CountedHld.h"

#include <new>
#include <type_traits>

// Copy policy of rom_COW: a new referent in mem_Malloc storage, the only
// kind that rom_CountedHld frees.
template <class T>
struct rom_Direct {
  static_assert(std::is_trivially_copyable_v<T>, "rom_ referents are plain storage");
  static T* Copy(T const& source) { return ::new (mem_Malloc(sizeof(T))) T(source); }
};

// The persistence layer's copy-on-write handle: copies share the referent
// until one of them asks for write access with Get(), which first gives that
// handle a private copy. Everything else is rom_CountedHld's.
template <class T, class Policy = rom_Direct<T> >
class rom_COW : public rom_CountedHld<T> {
  using Base = rom_CountedHld<T>;

public:
  rom_COW() = default;
  explicit rom_COW(T* referent) : Base(referent) {}
  explicit rom_COW(T const& value) : Base(Policy::Copy(value)) {}

  rom_COW& operator=(T* referent) {
    Base::operator=(referent);
    return *this;
  }

  // Write access: the referent, made private to this handle first. The copy
  // and the new count are made before anything changes, so a failure leaves
  // the handle as it was. Copying a trivially copyable value runs no code of
  // the caller's, so, unlike cow_COW, the other owners cannot have gone
  // meanwhile and the shared count stays above 1.
  T* Get() {
    if (this->m_Referent == nullptr || this->Exclusive()) return this->m_Referent;
    // A holder with a referent has a count; below 1 it is a share given up.
    this->m_Count->AssertPositive();
    T* copy = Policy::Copy(*this->m_Referent);
    rom_Counter* fresh;
    try {
      fresh = rom_Counter::New();
    } catch (...) {
      mem_Free(copy);
      throw;
    }
    this->m_Count->Lower();
    this->m_Count = fresh;
    this->m_Referent = copy;
    return copy;
  }

  bool Identical(rom_COW const& other) const { return this->m_Referent == other.m_Referent; }
};

#endif
