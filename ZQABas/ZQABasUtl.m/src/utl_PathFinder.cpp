#include "utl_PathFinder.h"

#include "ZQABasUtlFilePath.h"

#include <cstdlib>
#include <cstring>
#include <string>

cow_String utl_PathFinder::getSubDirPath(cow_String const& envVariable, cow_String const& subDir,
                                         cow_String const& fileName, bool, bool, bool) {
  char const* value = std::getenv(envVariable.CStr());
  if (value == nullptr) return cow_String();
  for (char const* start = value;;) {
    char const* end = std::strchr(start, ':');
    std::string directory = end ? std::string(start, end) : std::string(start);
    if (!directory.empty()) {
      cow_String candidate = ZQABasUtlFilePath(directory.c_str(), subDir).PathName();
      if (ZQABasUtlFilePath(candidate, fileName).Exists()) return candidate;
    }
    if (end == nullptr) return cow_String();
    start = end + 1;
  }
}
