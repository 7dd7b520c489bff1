#include "ZQABasUtlStat.h"

#include "nex_PrimException.h"
#include "nex_SystemErrorCode.h"

#include <cerrno>
#include <sys/stat.h>

namespace {
char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/ZQABasUtlStat";
}

ZQABasUtlStat::ZQABasUtlStat(cow_String const& path) : m_PathName(path) {
  struct stat status;
  if (::stat(path.CStr(), &status) != 0) {
    m_ErrorCode = errno;
    return;
  }
  m_IsDirectory = S_ISDIR(status.st_mode);
  m_IsRegularFile = S_ISREG(status.st_mode);
  m_Size = status.st_size;
  m_ModificationTime = status.st_mtime;
  m_Mode = status.st_mode;
  m_OwnerId = status.st_uid;
  m_GroupId = status.st_gid;
}

void ZQABasUtlStat::ThrowIfFileNotFound() const {
  if (Found()) return;
  nex_PrimException<nex_SystemErrorCode, 1>(nex_SystemErrorCode(m_ErrorCode, m_PathName)).Throw(kSourcePath, __LINE__);
}
