#ifndef ZQABasUtlStat_h
#define ZQABasUtlStat_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "utl_FileOffset.h"

#include <cstdint>

// The status of one path, read once by stat(2) at construction; symbolic
// links are followed. When the call failed, Found() is false, ErrorCode()
// holds the errno value and every other answer is false or 0.
//
// The two type flags are IsDirectory() and IsRegularFile(): a path that is
// neither (a device, a pipe, a socket) answers false to both. The three
// attribute words, in order, are Mode() (st_mode: type and permission bits),
// OwnerId() (st_uid) and GroupId() (st_gid).
//
// Invariant: the record never changes after construction; Found() is true
// exactly when ErrorCode() is 0.
class ZQA_EXPORT ZQABasUtlStat {
public:
  explicit ZQABasUtlStat(cow_String const& path);

  cow_String const& PathName() const noexcept { return m_PathName; }
  bool Found() const noexcept { return m_ErrorCode == 0; }
  int ErrorCode() const noexcept { return m_ErrorCode; }

  bool IsDirectory() const noexcept { return m_IsDirectory; }
  bool IsRegularFile() const noexcept { return m_IsRegularFile; }
  utl_FileOffset Size() const noexcept { return m_Size; }
  // Seconds since 1970-01-01 00:00 UTC.
  std::int64_t ModificationTime() const noexcept { return m_ModificationTime; }

  unsigned int Mode() const noexcept { return m_Mode; }
  unsigned int OwnerId() const noexcept { return m_OwnerId; }
  unsigned int GroupId() const noexcept { return m_GroupId; }

  // Raises nex_PrimException<nex_SystemErrorCode, 1>, carrying the path and
  // the system's reason, when the stat failed; does nothing otherwise.
  void ThrowIfFileNotFound() const;

private:
  cow_String m_PathName;
  int m_ErrorCode = 0;
  bool m_IsDirectory = false;
  bool m_IsRegularFile = false;
  utl_FileOffset m_Size = 0;
  std::int64_t m_ModificationTime = 0;
  unsigned int m_Mode = 0;
  unsigned int m_OwnerId = 0;
  unsigned int m_GroupId = 0;
};

#endif
