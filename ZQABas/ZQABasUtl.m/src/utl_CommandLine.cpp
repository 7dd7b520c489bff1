#include "utl_CommandLine.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/utl_CommandLine";
char const kAbsentText[] = "The command-line option %s is not set";
char const kNotIntegerText[] = "The command-line option %s has the value \"%s\", which is not an integer";

// A string with characters of its own, shared with nothing.
cow_String Private(char const* text, int length) { return cow_String(text, length); }
cow_String Private(cow_String const& text) { return Private(text.CStr(), text.Length()); }

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

}  // namespace

bool utl_CommandLine::IsMember(cow_String const& key) const {
  thr_MutexGuard guard(m_Mutex);
  return m_Options.IsMember(key);
}

cow_String utl_CommandLine::GetValue(cow_String const& key) const {
  thr_MutexGuard guard(m_Mutex);
  return m_Options.IsMember(key) ? Private(m_Options.ConstGet(key)) : cow_String();
}

int utl_CommandLine::ConstGetValueAsInt(cow_String const& key) const {
  cow_String value;
  {
    thr_MutexGuard guard(m_Mutex);
    if (!m_Options.IsMember(key)) {
      nex_ThrowMessage(kSourcePath, __LINE__, atr_SubstituteFormat(atr_translate(kAbsentText), key));
    }
    value = Private(m_Options.ConstGet(key));
  }
  char const* text = value.CStr();
  char* end = nullptr;
  errno = 0;
  long number = std::strtol(text, &end, 10);
  while (IsBlank(*end)) ++end;
  bool isInt = end != text && *end == '\0' && errno == 0 && number >= INT_MIN && number <= INT_MAX;
  if (!isInt) {
    nex_ThrowMessage(kSourcePath, __LINE__, atr_SubstituteFormat(atr_translate(kNotIntegerText), key, value));
  }
  return static_cast<int>(number);
}

void utl_CommandLine::Set(cow_String const& key, cow_String const& value) {
  // The private copies are made and dropped under the lock too: the map
  // shares their characters, and a count must never change outside it.
  thr_MutexGuard guard(m_Mutex);
  m_Options.Insert(Private(key), Private(value));
}

void utl_CommandLine::Remove(cow_String const& key) {
  thr_MutexGuard guard(m_Mutex);
  m_Options.Remove(key);
}

void utl_CommandLine::Parse(int argc, char const* const* argv) {
  for (int i = 1; i < argc; ++i) {
    char const* argument = argv[i];
    char const* key = argument[0] == '-' ? argument + 1 : argument;
    char const* equals = std::strchr(key, '=');
    if (equals != nullptr) {
      if (equals != key) Set(Private(key, static_cast<int>(equals - key)), equals + 1);
    } else if (key != argument && *key != '\0') {
      Set(key, i + 1 < argc ? argv[++i] : "");
    }
  }
}
