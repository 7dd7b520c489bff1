#ifndef utl_CommandLine_h
#define utl_CommandLine_h

#include "ZQABasExport.h"
#include "cow_Map.h"
#include "cow_String.h"
#include "thr_GlobalSingleton.h"
#include "thr_Mutex.h"

// The options a program was given, as key and value texts, shared by the
// whole process (thr_GlobalSingleton<utl_CommandLine>::Instance()). The
// library reads settings from it, such as nzdb_page_size and
// nzdb_cache_limit; the program fills it with Parse or Set.
//
// Every operation holds the object's mutex, and every value is copied into
// and out of the object as a string of its own, so that threads never share
// a string's count.
//
// Invariant: m_Options is touched only under m_Mutex and shares no string
// with anything outside the object.
class ZQA_EXPORT utl_CommandLine : public thr_GlobalSingleton<utl_CommandLine> {
public:
  bool IsMember(cow_String const& key) const;
  // The value, or the empty string when the key is absent.
  cow_String GetValue(cow_String const& key) const;
  // The value as a decimal int (a sign and surrounding blanks allowed).
  // Raises nex_PrimException<atr_String, 1> naming the key when it is
  // absent, and naming the key and the value when that is no int.
  int ConstGetValueAsInt(cow_String const& key) const;
  void Set(cow_String const& key, cow_String const& value);
  void Remove(cow_String const& key);

  // Takes the options out of a program's arguments, argv[0] excepted, in
  // two forms: "key=value" (a leading "-" is dropped from the key), and
  // "-key value", which takes the next argument as the value whatever it
  // looks like ("-key" as the last argument gets the empty value). Other
  // arguments are left for the program. A later option replaces an earlier
  // one of the same key.
  void Parse(int argc, char const* const* argv);

private:
  friend class thr_GlobalSingleton<utl_CommandLine>;
  utl_CommandLine() = default;

  mutable thr_Mutex m_Mutex;
  cow_Map<cow_String, cow_String> m_Options;
};

#endif
