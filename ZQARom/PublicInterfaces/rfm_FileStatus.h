#ifndef rfm_FileStatus_h
#define rfm_FileStatus_h

// What a status check found out about a database file since the last check.
struct rfm_FileStatus {
  enum RfmFileStatus {
    kUnchanged = 0,
    kReplaced = 1,        // the creation time differs: another file took its place
    kFlushed = 2,         // the flush count differs: the writer has flushed
    kUnreadable = 3,      // the file could not be read
    kInTransaction = 4,   // a writer's transaction is running
  };
};

#endif
