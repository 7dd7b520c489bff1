#include "rfm_FileReprLocal.h"

#include "ZQABasAssert.h"
#include "rfm_DBStatusChecker.h"
#include "rfm_FileException.h"

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileReprLocal";

}  // namespace

rfm_FileReprLocal::rfm_FileReprLocal(cow_String const& name, int access, bool preallocate)
    : rfm_FileRepr(name), m_File(name, access), m_ReadOnly(access == utl_FileAccessRead),
      m_Preallocate(preallocate) {
  if (access != utl_FileAccessCreate) {
    m_StatusChecker.reset(new rfm_DBStatusCheckerFileLocal(name));
    m_File.Seek(0);
    m_LogicalFileSize = m_PhysicalFileSize = m_File.FileSize();
  }
}

rfm_FileReprLocal::~rfm_FileReprLocal() {
  m_StatusChecker.reset();
  m_File.Close();
}

void rfm_FileReprLocal::RaiseReadOnly(int line) const { rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, line); }

void rfm_FileReprLocal::Seek(utl_FileOffset offset) {
  if (offset == m_Location) return;
  m_File.Seek(offset);
  m_Location = offset;
}

int rfm_FileReprLocal::Read(char* buffer, int count) {
  if (buffer == nullptr || count < 0) {
    rfm_FileBadParameterExc("rfm_FileReprLocal::Read").Throw(kSourcePath, __LINE__);
  }
  int got = m_File.Read(buffer, count);
  m_Location += got;
  return got;
}

int rfm_FileReprLocal::Write(char const* buffer, int count) {
  if (buffer == nullptr || count < 0) {
    rfm_FileBadParameterExc("rfm_FileReprLocal::Write").Throw(kSourcePath, __LINE__);
  }
  if (m_ReadOnly) RaiseReadOnly(__LINE__);
  int written = m_File.Write(buffer, count);
  m_Location += written;
  if (m_Location > m_PhysicalFileSize) m_PhysicalFileSize = m_Location;
  return written;
}

bool rfm_FileReprLocal::FileExtend(utl_FileOffset delta) {
  if (m_ReadOnly) RaiseReadOnly(__LINE__);
  if (delta < 0) rfm_FileBadParameterExc("rfm_FileReprLocal::FileExtend").Throw(kSourcePath, __LINE__);
  utl_FileOffset const logical = m_LogicalFileSize + delta;
  utl_FileOffset rounded = (logical + kPreallocationStep - 1) / kPreallocationStep * kPreallocationStep;
  bool const grows = m_Preallocate && rounded > m_PhysicalFileSize;
  // The logical length follows only a real file that could grow.
  if (grows) m_File.Extend(rounded);
  m_LogicalFileSize = logical;
  if (!grows) return false;
  m_PhysicalFileSize = rounded;
  return true;
}

void rfm_FileReprLocal::Trim() {
  if (m_ReadOnly) RaiseReadOnly(__LINE__);
  m_File.Extend(m_LogicalFileSize);
  m_PhysicalFileSize = m_LogicalFileSize;
}

rfm_FileStatus::RfmFileStatus rfm_FileReprLocal::FileStatus() {
  return m_StatusChecker ? m_StatusChecker->CheckStatus() : rfm_FileStatus::kUnchanged;
}

void rfm_FileReprLocal::FTPCheckSet(int offset) { WriteTransferRecord(offset); }

void rfm_FileReprLocal::FTPCheckCheck(int offset) { CheckTransferRecord(offset); }
