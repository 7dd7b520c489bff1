#ifndef utl_PathFinder_h
#define utl_PathFinder_h

#include "ZQABasExport.h"
#include "cow_String.h"

// Finds an installed file below the directories of a path list held in an
// environment variable, such as ZOR_PATH. Holds no state.
class ZQA_EXPORT utl_PathFinder {
public:
  // The value of envVariable is split at ":"; empty parts are skipped. The
  // answer is the directory dir + "/" + subDir for the first listed dir
  // whose subDir holds an entry named fileName. It names the directory, not
  // the file: a caller that wants the file appends fileName. It is empty
  // when the variable is not set or no listed directory holds the file. The
  // three flags are taken for the callers' form and change nothing.
  static cow_String getSubDirPath(cow_String const& envVariable, cow_String const& subDir, cow_String const& fileName,
                                  bool, bool, bool);
};

#endif
