#include "rfm_DBStatusChecker.h"

#include "ZQABasAssert.h"
#include "ZQABasException.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_Swapper.h"
#include "rfm_Block0.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"
#include "rfm_ReaderSemaphore.h"
#include "utl_File.h"

#include <cstdint>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_DBStatusChecker";

}  // namespace

rfm_DBStatusCheckerFile::rfm_DBStatusCheckerFile(cow_String const& name) : m_Name(name) {
  // A file too short to be a database has nothing to report yet.
  try {
    GetFlushCountAndCreationTime(m_FlushCount, m_CreationTime);
  } catch (ZQABasException const&) {
    m_FlushCount = 0;
    m_CreationTime = 0;
  }
}

void rfm_DBStatusCheckerFile::GetFlushCountAndCreationTime(int& flushCount, int& creationTime) const {
  utl_File file(m_Name, utl_FileAccessRead, utl_FileShareAll);
  // The flush count and the creation time are neighbours: one read serves both.
  static_assert(kRfmCreationTimeOffset == kRfmFlushCountOffset + 4, "block 0 layout");
  char bytes[8];
  file.Seek(kRfmFlushCountOffset);
  if (file.Read(bytes, sizeof bytes) != sizeof bytes) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("*** ERROR: File too short for a database: %s."), m_Name));
  }
  flushCount = rfm_IntConverter::Internalize(rfm_FileOrder(), bytes);
  creationTime = rfm_IntConverter::Internalize(rfm_FileOrder(), bytes + 4);
}

rfm_FileStatus::RfmFileStatus rfm_DBStatusCheckerFile::Answer(rfm_FileStatus::RfmFileStatus status) {
  StatusHandler(status);
  return status;
}

rfm_FileStatus::RfmFileStatus rfm_DBStatusCheckerFile::CheckStatus() {
  if (rfm_ReaderSemaphore::ReaderSemaphore(m_Name)) return Answer(rfm_FileStatus::kInTransaction);
  int flushCount = 0;
  int creationTime = 0;
  try {
    GetFlushCountAndCreationTime(flushCount, creationTime);
  } catch (ZQABasException const&) {
    // R6: an unreadable file is a status, never an exception.
    return Answer(rfm_FileStatus::kUnreadable);
  }
  if (creationTime != m_CreationTime) return Answer(rfm_FileStatus::kReplaced);
  if (flushCount != m_FlushCount) {
    m_FlushCount = flushCount;
    StatusHandler(rfm_FileStatus::kFlushed);
    ModifyHandler();
    return rfm_FileStatus::kFlushed;
  }
  return Answer(rfm_FileStatus::kUnchanged);
}
