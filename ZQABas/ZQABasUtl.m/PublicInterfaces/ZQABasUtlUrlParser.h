#ifndef ZQABasUtlUrlParser_h
#define ZQABasUtlUrlParser_h

#include "ZQABasExport.h"
#include "cow_String.h"

// Reads the parts of a remote database URL:
//
//   zbxrdb://[user[:pass]@]host[:port]/path
//
// The authority (user, pass, host, port) runs from the scheme to the first
// "/"; the path is everything after that one slash, so a doubled slash gives
// an absolute remote path ("zbxrdb://h:5000//abs/f.zdb" has path
// "/abs/f.zdb"). The host must not be empty, a port present after ":" must
// be all digits, and a user present before "@" must not be empty. A URL
// whose authority breaks these rules is malformed and has none of the parts.
// Every getter of a part that is absent returns the empty string. The class
// holds no state; each call reads its argument afresh.
class ZQA_EXPORT ZQABasUtlUrlParser {
public:
  // The scheme every URL of the library begins with; the one place it is spelled.
  static constexpr char kScheme[] = "zbxrdb://";

  // True when text begins with the scheme and has anything after it. Says
  // nothing of whether the rest is well formed: ask HasHost for that.
  static bool IsUrl(cow_String const& text);

  static bool HasUser(cow_String const& url);
  static cow_String GetUser(cow_String const& url);
  // A password is present when the user is followed by ":" and a non-empty text.
  static bool HasPass(cow_String const& url);
  static cow_String GetPass(cow_String const& url);
  static bool HasHost(cow_String const& url);
  static cow_String GetHost(cow_String const& url);
  // The port as written, digits only; it is not range-checked.
  static bool HasPort(cow_String const& url);
  static cow_String GetPort(cow_String const& url);
  // A path is present when the text after the authority's "/" is not empty.
  static bool HasPath(cow_String const& url);
  static cow_String GetPath(cow_String const& url);
};

#endif
