#ifndef rfm_DBStatusChecker_h
#define rfm_DBStatusChecker_h

#include "cow_String.h"
#include "mem_Alloc.h"
#include "rfm_FileStatus.h"

// Tells a reader what happened to a database file since it last looked.
class rfm_DBStatusChecker : public mem_AllocationOperators {
public:
  virtual ~rfm_DBStatusChecker() = default;
  virtual rfm_FileStatus::RfmFileStatus CheckStatus() = 0;
  // Called with every answer of CheckStatus, and ModifyHandler once more
  // when the answer is a new flush.
  virtual void StatusHandler(rfm_FileStatus::RfmFileStatus status) = 0;
  virtual void ModifyHandler() = 0;
};

// Compares the flush count and creation time in a file's first block with
// the values last seen. The file is read through a handle of its own, so no
// position of the open database moves.
//
// Invariant: the values last seen change only when a new flush is seen; a
// replaced file keeps answering "replaced".
class rfm_DBStatusCheckerFile : public rfm_DBStatusChecker {
public:
  explicit rfm_DBStatusCheckerFile(cow_String const& name);

  rfm_FileStatus::RfmFileStatus CheckStatus() override;
  // Reads both values; raises when the file cannot be opened or is too short.
  void GetFlushCountAndCreationTime(int& flushCount, int& creationTime) const;

private:
  rfm_FileStatus::RfmFileStatus Answer(rfm_FileStatus::RfmFileStatus status);

  cow_String m_Name;
  int m_FlushCount = 0;
  int m_CreationTime = 0;
};

// The checker of a local file: it has nothing to do with an answer.
class rfm_DBStatusCheckerFileLocal : public rfm_DBStatusCheckerFile {
public:
  using rfm_DBStatusCheckerFile::rfm_DBStatusCheckerFile;
  void StatusHandler(rfm_FileStatus::RfmFileStatus) override {}
  void ModifyHandler() override {}
};

#endif
