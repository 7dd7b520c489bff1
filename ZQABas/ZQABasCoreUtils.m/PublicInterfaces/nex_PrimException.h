#ifndef nex_PrimException_h
#define nex_PrimException_h

#include "ZQABasException.h"
#include "atr_StringBase.h"

#include <utility>

inline char const* nex_ExceptionText(atr_StringBase const& text) noexcept { return text.CStr(); }

// An exception carrying one value of T. The category N tells the kinds
// apart: 1 is a user-visible message (T is atr_String), 3 an internal
// assertion (T is cow_String holding the failed condition).
template <class T, int N>
class ZQA_EXPORT nex_PrimException : public ZQABasException {
public:
  static constexpr int kCategory = N;

  explicit nex_PrimException(T value) : m_Value(std::move(value)) {}

  T const& Value() const noexcept { return m_Value; }
  char const* what() const noexcept override { return nex_ExceptionText(m_Value); }
  [[noreturn]] void Propagate() const override { throw *this; }

private:
  T m_Value;
};

#endif
