#include "rfm_ChangeCount.h"

#include "rfm_IOBuffer.h"

namespace {
constexpr utl_FileOffset kChangeCountPosition = 4;
}

int rfm_FlushChangeCount(rfm_IOBuffer& buffer, int& count) {
  if (buffer.ReadOnly()) return 0;
  utl_FileOffset location = buffer.Location();
  // Raised only once written: a flush that fails is done again with the
  // same count.
  buffer.Seek(kChangeCountPosition);
  buffer.WriteInt(rfm_NextCount(count));
  buffer.Flush();
  buffer.Seek(location);
  count = rfm_NextCount(count);
  return count;
}

int rfm_SnapChangeCount(rfm_IOBuffer& buffer, int databaseFlushCount, int& flushCountSeen, int& count) {
  if (!buffer.ReadOnly()) return 0;
  if (databaseFlushCount == flushCountSeen) return 0;
  flushCountSeen = databaseFlushCount;
  utl_FileOffset location = buffer.Location();
  buffer.Seek(kChangeCountPosition);
  int stored = buffer.ReadInt();
  // Deliberately no seek back here: callers seek before they read on.
  if (stored == count) return 0;
  count = stored;
  buffer.Flush();
  buffer.Seek(location);
  return count;
}
