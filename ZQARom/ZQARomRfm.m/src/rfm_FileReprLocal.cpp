#include "rfm_FileReprLocal.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_DBStatusChecker.h"
#include "rfm_FileException.h"

#include <cstdint>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileReprLocal";

// The transfer check record:
//
//  offset  size  content
//       0     4  marker: written as zeros; 0A 00 0D 0A is accepted too
//       4     8  physical file length, IEEE double in the file's byte order
constexpr int kFtpRecordSize = 12;
constexpr int kFtpLengthOffset = 4;
unsigned char const kFtpMarker[4] = {0x0A, 0x00, 0x0D, 0x0A};
unsigned char const kFtpNoMarker[4] = {0x00, 0x00, 0x00, 0x00};
// Doubles at or above this cannot be a file length.
constexpr double kLargestLength = 9.0e18;

[[noreturn]] void RaiseCorrupt(int line) {
  nex_ThrowMessage(kSourcePath, line,
                   atr_translate("***ERROR: The Zorbex database file is corrupt. If this file was transferred from "
                                 "another machine using FTP or equivalent, ensure that the file was copied using "
                                 "the binary mode instead of ASCII mode."));
}

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
  m_LogicalFileSize += delta;
  utl_FileOffset rounded = (m_LogicalFileSize + kPreallocationStep - 1) / kPreallocationStep * kPreallocationStep;
  if (!m_Preallocate || rounded <= m_PhysicalFileSize) return false;
  m_File.Extend(rounded);
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

void rfm_FileReprLocal::FTPCheckSet(int offset) {
  utl_FileOffset noted = m_Location;
  unsigned char record[kFtpRecordSize] = {};
  double length = static_cast<double>(m_PhysicalFileSize);
  if (SwapBytes()) {
    omi_SwapperGuts::ExternalizeArray(record + kFtpLengthOffset, &length, 1, sizeof length);
  } else {
    std::memcpy(record + kFtpLengthOffset, &length, sizeof length);
  }
  Seek(offset);
  Write(reinterpret_cast<char const*>(record), kFtpRecordSize);
  Seek(noted);
}

void rfm_FileReprLocal::FTPCheckCheck(int offset) {
  utl_FileOffset noted = m_Location;
  unsigned char record[kFtpRecordSize] = {};
  Seek(offset);
  int got = Read(reinterpret_cast<char*>(record), kFtpRecordSize);
  Seek(noted);
  if (got != kFtpRecordSize) RaiseCorrupt(__LINE__);

  double length;
  if (SwapBytes()) {
    omi_SwapperGuts::InternalizeArray(&length, record + kFtpLengthOffset, 1, sizeof length);
  } else {
    std::memcpy(&length, record + kFtpLengthOffset, sizeof length);
  }
  if (!(length >= 0.0 && length < kLargestLength)) RaiseCorrupt(__LINE__);
  auto recorded = static_cast<utl_FileOffset>(length + 0.5);
  if (recorded != 0) {
    if (recorded != m_PhysicalFileSize) RaiseCorrupt(__LINE__);
    return;
  }
  if (std::memcmp(record, kFtpMarker, 4) != 0 && std::memcmp(record, kFtpNoMarker, 4) != 0) RaiseCorrupt(__LINE__);
}
