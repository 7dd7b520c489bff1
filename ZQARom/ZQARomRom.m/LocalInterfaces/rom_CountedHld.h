#ifndef rom_CountedHld_h
#define rom_CountedHld_h

#include "mem_Alloc.h"
#include "rom_Counter.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

// The persistence layer's counted holder, laid out as cow_CountedHld: a
// pointer to a count shared by all copies, then a pointer to the referent
// they own together. It differs in three ways:
// - A holder may have no count: ZeroReference() forgets both pointers
//   without touching what they point at, and a holder without a count owns
//   nothing, so dropping or destroying it does nothing.
// - LowerReference() gives up this holder's share without freeing anything,
//   even when it was the last. The holder keeps its pointers; a count below
//   1 marks a share already given up, which destruction and assignment leave
//   alone. Since the others may free count and referent once their shares
//   go, a lowered holder is normally zeroed next.
// - The referent is plain mem_Malloc storage released with mem_Free, never
//   destroyed, so T must be trivially copyable.
//
// Invariant: a holder without a count has no referent; a holder that holds
// a share points at a count of at least 1.
//
// Checked paths (raised as assertions through rom_Counter): sharing from a
// holder, DropReference(), LowerReference() and rom_COW::Get() on a shared
// referent raise "references > 0" when the holder's share was already given
// up; GetRef() raises "CountedHld has no value" when there is no referent.
template <class T>
class rom_CountedHld {
  static_assert(std::is_trivially_copyable_v<T>, "the referent is freed with mem_Free, without a destructor");
  static_assert(alignof(T) <= alignof(std::max_align_t), "the referent lives in mem_Malloc storage");

public:
  rom_CountedHld() : m_Count(rom_Counter::New()), m_Referent(nullptr) {}

  // Adopts referent, which must come from mem_Malloc (rom_Direct<T>::Copy
  // makes one); it is freed if the count cannot be allocated.
  explicit rom_CountedHld(T* referent) : m_Count(nullptr), m_Referent(referent) {
    try {
      m_Count = rom_Counter::New();
    } catch (...) {
      mem_Free(referent);
      throw;
    }
  }

  rom_CountedHld(rom_CountedHld const& other) : m_Count(other.m_Count), m_Referent(other.m_Referent) {
    if (m_Count) {
      m_Count->AssertPositive();
      m_Count->Raise();
    }
  }

  ~rom_CountedHld() { Release(); }

  rom_CountedHld& operator=(rom_CountedHld const& other) {
    // Taking the source's share first makes self-assignment harmless.
    rom_Counter* count = other.m_Count;
    T* referent = other.m_Referent;
    if (count) {
      count->AssertPositive();
      count->Raise();
    }
    Release();
    m_Count = count;
    m_Referent = referent;
    return *this;
  }

  // Adopts referent (from mem_Malloc) in place of the current one: an
  // exclusive holder frees the old referent and keeps its count; any other
  // leaves the old referent to its owners and takes a count of its own.
  rom_CountedHld& operator=(T* referent) {
    if (referent != nullptr && referent == m_Referent) return *this;
    if (Exclusive()) {
      mem_Free(m_Referent);
    } else {
      rom_Counter* fresh;
      try {
        fresh = rom_Counter::New();
      } catch (...) {
        mem_Free(referent);
        throw;
      }
      Release();
      m_Count = fresh;
    }
    m_Referent = referent;
    return *this;
  }

  bool HasValue() const { return m_Referent != nullptr; }
  bool IsNull() const { return m_Referent == nullptr; }
  bool Exclusive() const { return m_Count != nullptr && m_Count->References() == 1; }
  // The shared count; 0 for a holder without one.
  std::int32_t ReferenceCount() const { return m_Count ? m_Count->References() : 0; }

  // Neither copies nor checks for null.
  T const* ConstGet() const { return m_Referent; }
  T* GetPtr() const { return m_Referent; }
  T& GetRef() const {
    if (m_Referent == nullptr) rom_Counter::AbortNoValue();
    return *m_Referent;
  }

  // Gives up this holder's share; the last share frees referent and count.
  void DropReference() {
    if (m_Count) m_Count->AssertPositive();
    Release();
  }

  // Gives up this holder's share and frees nothing, keeping both pointers.
  void LowerReference() {
    if (m_Count == nullptr) return;
    m_Count->AssertPositive();
    m_Count->Lower();
  }

  // Forgets count and referent without reading or freeing either.
  void ZeroReference() noexcept {
    m_Count = nullptr;
    m_Referent = nullptr;
  }

  // Frees referent and count regardless of other holders.
  void Delete() noexcept {
    mem_Free(m_Referent);
    rom_Counter::Free(m_Count);
    m_Count = nullptr;
    m_Referent = nullptr;
  }

  // Frees only the referent; the holders keep their shared count.
  void DeleteReferent() noexcept {
    mem_Free(m_Referent);
    m_Referent = nullptr;
  }

protected:
  // Gives up a share still held; a count below 1 was already given up.
  void Release() noexcept {
    if (m_Count && m_Count->References() > 0 && m_Count->Lower() == 0) {
      mem_Free(m_Referent);
      rom_Counter::Free(m_Count);
    }
    m_Count = nullptr;
    m_Referent = nullptr;
  }

  rom_Counter* m_Count;
  T* m_Referent;
};

#endif
