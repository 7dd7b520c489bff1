#ifndef cow_CountedHld_h
#define cow_CountedHld_h

#include "mem_Alloc.h"

#include <cstdint>

// A counted holder: a separately allocated count shared by all copies, and a
// pointer to the referent they own together. The last copy to go deletes
// the referent and the count. Counts are plain integers: a holder and its
// copies live on one thread at a time.
//
// Invariant: a holder that has not been dropped owns a count of at least 1,
// even when its referent is null. DropReference() leaves both pointers null;
// every operation accepts that state.
template <class T>
class cow_CountedHld {
public:
  cow_CountedHld() : m_Count(NewCount()), m_Referent(nullptr) {}

  // Adopts referent; it is deleted if the count cannot be allocated.
  explicit cow_CountedHld(T* referent) : m_Count(nullptr), m_Referent(referent) {
    try {
      m_Count = NewCount();
    } catch (...) {
      delete referent;
      throw;
    }
  }

  cow_CountedHld(cow_CountedHld const& other) noexcept : m_Count(other.m_Count), m_Referent(other.m_Referent) {
    if (m_Count) ++*m_Count;
  }

  ~cow_CountedHld() { DropReference(); }

  cow_CountedHld& operator=(cow_CountedHld const& other) noexcept {
    // Taking the source's share first makes self-assignment harmless.
    std::int32_t* count = other.m_Count;
    T* referent = other.m_Referent;
    if (count) ++*count;
    DropReference();
    m_Count = count;
    m_Referent = referent;
    return *this;
  }

  // Adopts referent in place of the current one: an exclusive holder deletes
  // the old referent and keeps its count; a shared one leaves the old
  // referent to the others and takes a count of its own.
  cow_CountedHld& operator=(T* referent) {
    if (referent != nullptr && referent == m_Referent) return *this;
    if (m_Count && *m_Count == 1) {
      delete m_Referent;
    } else {
      std::int32_t* fresh;
      try {
        fresh = NewCount();
      } catch (...) {
        delete referent;
        throw;
      }
      if (m_Count) --*m_Count;
      m_Count = fresh;
    }
    m_Referent = referent;
    return *this;
  }

  bool HasValue() const { return m_Referent != nullptr; }
  bool IsNull() const { return m_Referent == nullptr; }
  bool Exclusive() const { return m_Count != nullptr && *m_Count == 1; }
  // Number of holders sharing the referent; 0 for a dropped holder.
  std::int32_t ReferenceCount() const { return m_Count ? *m_Count : 0; }

  // None of these copies or checks for null.
  T const* ConstGet() const { return m_Referent; }
  T& GetRef() const { return *m_Referent; }
  T* GetPtr() const { return m_Referent; }

  // Gives up this holder's share; the last share deletes referent and count.
  void DropReference() noexcept {
    if (m_Count && --*m_Count == 0) {
      delete m_Referent;
      mem_Free(m_Count);
    }
    m_Count = nullptr;
    m_Referent = nullptr;
  }

  // Deletes referent and count regardless of other holders.
  void Delete() noexcept {
    delete m_Referent;
    mem_Free(m_Count);
    m_Count = nullptr;
    m_Referent = nullptr;
  }

  // Deletes only the referent; the holders keep their shared count.
  void DeleteReferent() noexcept {
    delete m_Referent;
    m_Referent = nullptr;
  }

protected:
  static std::int32_t* NewCount() {
    auto* count = static_cast<std::int32_t*>(mem_OperatorNewTinyThrow(sizeof(std::int32_t)));
    *count = 1;
    return count;
  }

  std::int32_t* m_Count;
  T* m_Referent;
};

#endif
