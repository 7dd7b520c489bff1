#ifndef omi_Singleton_h
#define omi_Singleton_h

#include "ZQABasExport.h"

#include <cstdlib>

// Holds the one instance of T. The constructor records the base subobject
// of the object being built, so the pointer never comes from a downcast of
// an object whose construction has not finished; it is downcast to T only
// once the T is complete.
//
// Invariant: s_Instance is null or points at the base of the one live T.
// A T whose construction fails clears the pointer again on the way out.
//
// There is no lock: the instance is made and ended on one thread, before and
// after any other thread uses it. Exported, so that the library and the
// application share one pointer per T.
template <class T>
class ZQA_EXPORT omi_SingletonBase {
public:
  omi_SingletonBase(omi_SingletonBase const&) = delete;
  omi_SingletonBase& operator=(omi_SingletonBase const&) = delete;

  // Destroys the instance, if there is one; the next Instance() makes anew.
  static void Finalize() {
    omi_SingletonBase* instance = s_Instance;
    s_Instance = nullptr;
    delete instance;
  }

protected:
  omi_SingletonBase() { s_Instance = this; }
  virtual ~omi_SingletonBase() {
    if (s_Instance == this) s_Instance = nullptr;
  }

  static inline omi_SingletonBase* s_Instance = nullptr;
};

// A lazily made, single-threaded singleton. T derives from omi_Singleton<T>
// and may keep its constructor and destructor private, naming
// omi_Singleton<T> a friend:
//
//   class dbc_Utils : public omi_Singleton<dbc_Utils> {
//     friend class omi_Singleton<dbc_Utils>;
//     dbc_Utils();
//   };
template <class T>
class ZQA_EXPORT omi_Singleton : public omi_SingletonBase<T> {
  using Base = omi_SingletonBase<T>;

public:
  static T& Instance() {
    if (Base* existing = Base::s_Instance) return static_cast<T&>(*existing);
    T* made = new T;
    // Another T built meanwhile (inside T's constructor, or elsewhere) would
    // have taken the pointer: two instances is a programming error.
    if (Base::s_Instance != made) std::abort();
    return *made;
  }

protected:
  omi_Singleton() = default;
  ~omi_Singleton() override = default;
};

#endif
