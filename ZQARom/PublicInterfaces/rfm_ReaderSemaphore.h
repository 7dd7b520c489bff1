#ifndef rfm_ReaderSemaphore_h
#define rfm_ReaderSemaphore_h

#include "cow_String.h"

// The marker by which a writer announces a transaction to readers in other
// processes: a directory beside the database ("job.zdb" has "job.lsm").
// It is advisory: nothing stops a reader, and the writer waits for no one.
// A marker left by a writer that died stays until someone removes it.
class ZQA_EXPORT rfm_ReaderSemaphore {
public:
  static cow_String MakeSemaphorePath(cow_String const& name);
  // Whether the marker exists; a URL never has one.
  static bool ReaderSemaphore(cow_String const& name);
  // Errors of mkdir and rmdir are ignored: a marker left over from a crash
  // is simply reused, a missing one is simply missing.
  static void ReaderSemaphoreSet(cow_String const& name);
  static void ReaderSemaphoreClear(cow_String const& name);
  // Blocks, polling once a second, while the marker exists.
  static void ReaderSemaphoreWait(cow_String const& name);
};

#endif
