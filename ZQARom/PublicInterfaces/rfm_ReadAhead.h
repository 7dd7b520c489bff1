#ifndef rfm_ReadAhead_h
#define rfm_ReadAhead_h

#include "ZQABasExport.h"

// Whether a compressed file opened for reading decodes the segment after
// the one being read on a thread of its own (one thread per such file,
// started by its first read that crosses into a new segment). It is on
// unless the environment variable ZQA_READ_AHEAD is "0" when the setting
// is first asked for; SetEnabled overrides that. A change affects files
// opened after it: files already open keep what they had. Off, a file
// decodes each segment on the thread that reads it and starts no thread.
class ZQA_EXPORT rfm_ReadAhead {
public:
  static void SetEnabled(bool enabled);
  static bool IsEnabled();
};

#endif
