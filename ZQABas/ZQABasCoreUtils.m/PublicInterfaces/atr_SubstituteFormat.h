#ifndef atr_SubstituteFormat_h
#define atr_SubstituteFormat_h

#include "atr_String.h"

// One argument of atr_SubstituteFormat: a text, an integer or a real.
class ZQA_EXPORT atr_FormatArg {
public:
  enum Kind { kText, kInteger, kReal };

  atr_FormatArg(char const* text) : m_Kind(kText), m_Text(text) {}
  atr_FormatArg(atr_StringBase const& text) : m_Kind(kText), m_Text(text) {}
  atr_FormatArg(int value) : m_Kind(kInteger), m_Integer(value) {}
  atr_FormatArg(unsigned int value) : m_Kind(kInteger), m_Integer(value) {}
  atr_FormatArg(long value) : m_Kind(kInteger), m_Integer(value) {}
  atr_FormatArg(unsigned long value) : m_Kind(kInteger), m_Integer(static_cast<long long>(value)) {}
  atr_FormatArg(long long value) : m_Kind(kInteger), m_Integer(value) {}
  atr_FormatArg(double value) : m_Kind(kReal), m_Real(value) {}

  Kind GetKind() const { return m_Kind; }
  atr_String const& Text() const { return m_Text; }
  long long Integer() const { return m_Integer; }
  double Real() const { return m_Real; }

private:
  Kind m_Kind;
  atr_String m_Text;
  long long m_Integer = 0;
  double m_Real = 0.0;
};

// Fills the printf-style conversions of format with the arguments: %s, %d,
// %f and their flags, widths and precisions, positional forms such as %1$s,
// and %%. An argument of another kind than its conversion asks for is
// converted (a number for %s is written as text). A conversion without an
// argument is copied unchanged, so a wrong format never reads past its
// arguments.
ZQA_EXPORT atr_String atr_SubstituteFormatArgs(atr_StringBase const& format, atr_FormatArg const* args,
                                               int count);

template <class... Args>
atr_String atr_SubstituteFormat(atr_StringBase const& format, Args const&... args) {
  if constexpr (sizeof...(Args) == 0) {
    return atr_SubstituteFormatArgs(format, nullptr, 0);
  } else {
    atr_FormatArg const list[] = {atr_FormatArg(args)...};
    return atr_SubstituteFormatArgs(format, list, static_cast<int>(sizeof...(Args)));
  }
}

#endif
