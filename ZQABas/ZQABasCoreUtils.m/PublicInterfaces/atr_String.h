#ifndef atr_String_h
#define atr_String_h

#include "atr_StringBase.h"

// A user-visible text: what exceptions carry and what the translation and
// formatting functions produce. The same shared representation as every
// other string of the library.
class ZQA_EXPORT atr_String : public atr_StringBase {
public:
  using atr_StringBase::atr_StringBase;
  atr_String() noexcept = default;
  atr_String(atr_StringBase const& other) noexcept : atr_StringBase(other) {}
  atr_String(atr_StringBase&& other) noexcept : atr_StringBase(static_cast<atr_StringBase&&>(other)) {}
};

#endif
