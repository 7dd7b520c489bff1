#include "ZQABasUtlUrlParser.h"

#include <cstring>
#include <string_view>

namespace {

// The parts of a well-formed URL, as views into the URL's characters.
struct UrlParts {
  std::string_view user;
  std::string_view pass;
  std::string_view host;
  std::string_view port;
  std::string_view path;
};

constexpr std::size_t kSchemeLength = sizeof ZQABasUtlUrlParser::kScheme - 1;

std::string_view View(cow_String const& text) {
  return std::string_view(text.CStr(), static_cast<std::size_t>(text.Length()));
}

bool StartsWithScheme(std::string_view text) {
  return text.size() > kSchemeLength && std::memcmp(text.data(), ZQABasUtlUrlParser::kScheme, kSchemeLength) == 0;
}

bool AllDigits(std::string_view text) {
  if (text.empty()) return false;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

// Splits url into its parts; false when it is no URL or its authority is malformed.
bool Parse(cow_String const& url, UrlParts& parts) {
  std::string_view text = View(url);
  if (!StartsWithScheme(text)) return false;
  text.remove_prefix(kSchemeLength);

  std::string_view authority = text;
  std::size_t slash = text.find('/');
  if (slash != std::string_view::npos) {
    authority = text.substr(0, slash);
    parts.path = text.substr(slash + 1);
  }

  // The last "@" ends the user information, so a password may hold "@".
  std::size_t at = authority.rfind('@');
  if (at != std::string_view::npos) {
    std::string_view userInfo = authority.substr(0, at);
    authority.remove_prefix(at + 1);
    std::size_t colon = userInfo.find(':');
    parts.user = userInfo.substr(0, colon);
    if (colon != std::string_view::npos) parts.pass = userInfo.substr(colon + 1);
    if (parts.user.empty()) return false;
  }

  std::size_t colon = authority.find(':');
  parts.host = authority.substr(0, colon);
  if (colon != std::string_view::npos) {
    parts.port = authority.substr(colon + 1);
    if (!AllDigits(parts.port)) return false;
  }
  return !parts.host.empty();
}

cow_String ToString(std::string_view text) { return cow_String(text.data(), static_cast<int>(text.size())); }

}  // namespace

bool ZQABasUtlUrlParser::IsUrl(cow_String const& text) { return StartsWithScheme(View(text)); }

bool ZQABasUtlUrlParser::HasUser(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) && !parts.user.empty();
}

cow_String ZQABasUtlUrlParser::GetUser(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) ? ToString(parts.user) : cow_String();
}

bool ZQABasUtlUrlParser::HasPass(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) && !parts.pass.empty();
}

cow_String ZQABasUtlUrlParser::GetPass(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) ? ToString(parts.pass) : cow_String();
}

bool ZQABasUtlUrlParser::HasHost(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts);
}

cow_String ZQABasUtlUrlParser::GetHost(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) ? ToString(parts.host) : cow_String();
}

bool ZQABasUtlUrlParser::HasPort(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) && !parts.port.empty();
}

cow_String ZQABasUtlUrlParser::GetPort(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) ? ToString(parts.port) : cow_String();
}

bool ZQABasUtlUrlParser::HasPath(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) && !parts.path.empty();
}

cow_String ZQABasUtlUrlParser::GetPath(cow_String const& url) {
  UrlParts parts;
  return Parse(url, parts) ? ToString(parts.path) : cow_String();
}
