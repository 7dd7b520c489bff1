#include "ZQABasUtlFilePath.h"

#include "ZQABasAssert.h"
#include "ZQABasUtlUrlParser.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/ZQABasUtlFilePath";

std::string_view View(cow_String const& text) {
  return std::string_view(text.CStr(), static_cast<std::size_t>(text.Length()));
}

// The current directory; raises a message naming path when it cannot be read.
cow_String CurrentDirectory(cow_String const& path) {
  std::vector<char> buffer(256);
  while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
    int error = errno;
    if (error != ERANGE) {
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate("%s: cannot resolve against the current directory: %s"),
                                            path, std::strerror(error)));
    }
    buffer.resize(buffer.size() * 2);
  }
  return cow_String(buffer.data());
}

// Adds the components of path to components, resolving "." and ".." as it goes.
void AddComponents(std::string_view path, std::vector<std::string_view>& components) {
  while (!path.empty()) {
    std::size_t slash = path.find('/');
    std::string_view component = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      if (!components.empty()) components.pop_back();
      continue;
    }
    components.push_back(component);
  }
}

}  // namespace

ZQABasUtlFilePath::ZQABasUtlFilePath(cow_String const& directory, cow_String const& name) {
  if (name.Empty()) {
    m_PathName = directory;
  } else if (directory.Empty()) {
    m_PathName = name;
  } else {
    m_PathName = directory;
    if (directory[directory.Length() - 1] != '/') m_PathName.Append("/");
    m_PathName.Append(name);
  }
}

cow_String ZQABasUtlFilePath::AbsolutePathName() const {
  if (ZQABasUtlUrlParser::IsUrl(m_PathName)) return m_PathName;

  // base stays alive while components point into it.
  cow_String base;
  if (m_PathName.Empty() || m_PathName[0] != '/') base = CurrentDirectory(m_PathName);
  std::vector<std::string_view> components;
  AddComponents(View(base), components);
  AddComponents(View(m_PathName), components);

  if (components.empty()) return cow_String("/");
  std::string result;
  for (std::string_view component : components) {
    result += '/';
    result += component;
  }
  return cow_String(result.data(), static_cast<int>(result.size()));
}

bool ZQABasUtlFilePath::IsAccessible(int mode) const {
  return ::faccessat(AT_FDCWD, m_PathName.CStr(), mode, AT_EACCESS) == 0;
}

bool ZQABasUtlFilePath::Exists() const { return ZQABasUtlUrlParser::IsUrl(m_PathName) || IsAccessible(F_OK); }

bool ZQABasUtlFilePath::IsReadable() const { return ZQABasUtlUrlParser::IsUrl(m_PathName) || IsAccessible(R_OK); }

bool ZQABasUtlFilePath::IsWriteable() const { return !ZQABasUtlUrlParser::IsUrl(m_PathName) && IsAccessible(W_OK); }

bool ZQABasUtlFilePath::IsExecutable() const { return !ZQABasUtlUrlParser::IsUrl(m_PathName) && IsAccessible(X_OK); }
