#ifndef cow_String_h
#define cow_String_h

#include "atr_StringBase.h"

// The string handle of the library: two words on a shared, counted
// representation. Copying raises a count and never copies characters; a
// default string has no representation and is empty.
class ZQA_EXPORT cow_String : public atr_StringBase {
public:
  using atr_StringBase::atr_StringBase;
  cow_String() noexcept = default;
  cow_String(atr_StringBase const& other) noexcept : atr_StringBase(other) {}
  cow_String(atr_StringBase&& other) noexcept : atr_StringBase(static_cast<atr_StringBase&&>(other)) {}

  static cow_String Adopt(char* buffer, int length) { return atr_StringBase::Adopt(buffer, length); }

  cow_String& Append(atr_StringBase const& text) {
    append(text.CStr(), text.Length(), 0, kAll);
    return *this;
  }
  cow_String& Append(char const* text) {
    append(text, -1, 0, kAll);
    return *this;
  }
  cow_String Substr(int start, int count) const { return atr_StringBase::Substr(start, count); }
};

inline cow_String operator+(cow_String left, atr_StringBase const& right) { return left.Append(right); }
inline cow_String operator+(cow_String left, char const* right) { return left.Append(right); }

#endif
