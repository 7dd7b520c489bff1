#include "utl_TempFile.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/utl_TempFile";
char const kCannotCreateText[] = "Cannot create a temporary file in %s: %s";
char const kCannotMeasureText[] = "Cannot find the free space for %s: %s";
char const kDefaultDirectory[] = "/tmp";
char const kUniqueSuffix[] = "XXXXXX";

}  // namespace

utl_TempFile::utl_TempFile(cow_String const& prefix) {
  char const* variable = std::getenv("TMPDIR");
  std::string directory = variable != nullptr && *variable != '\0' ? variable : kDefaultDirectory;
  std::string name = directory + "/" + prefix.CStr() + kUniqueSuffix;
  int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
  if (descriptor < 0) {
    int error = errno;
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kCannotCreateText), directory.c_str(), std::strerror(error)));
  }
  ::close(descriptor);
  m_Name = name.c_str();
}

utl_TempFile::~utl_TempFile() { RemoveName(); }

void utl_TempFile::RemoveName() {
  if (m_Name.Empty()) return;
  ::unlink(m_Name.CStr());
  m_Name = cow_String();
}

int utl_TempFile::OpenIfPresent() const {
  int descriptor;
  do {
    descriptor = ::open(m_Name.CStr(), O_RDONLY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

unsigned long long utl_TempFile::AvailableSpace() const {
  struct statvfs status;
  if (::statvfs(m_Name.CStr(), &status) != 0) {
    int error = errno;
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kCannotMeasureText), m_Name, std::strerror(error)));
  }
  return static_cast<unsigned long long>(status.f_bavail) * status.f_frsize;
}
