#ifndef ZQABasUtlFilePath_h
#define ZQABasUtlFilePath_h

#include "ZQABasExport.h"
#include "cow_String.h"

// A path name made of a directory and a name, with questions about the file
// it names. The path is directory + "/" + name, or the one of the two that is
// not empty; no slash is added after a directory that already ends in one.
// Permission answers are those of access(2) for the effective user and group
// at the moment of the call: they can change as soon as they are given.
//
// A remote database URL ("zbxrdb://...") names no local file. It cannot be
// checked from here, and a URL handed to the library is meant to be opened
// for reading, so Exists and IsReadable answer true for it; a remote
// database is never written or run from this side, so IsWriteable and
// IsExecutable answer false. Its AbsolutePathName is the URL itself.
//
// Invariant: PathName() is fixed at construction.
class ZQA_EXPORT ZQABasUtlFilePath {
public:
  ZQABasUtlFilePath(cow_String const& directory, cow_String const& name);

  cow_String const& PathName() const noexcept { return m_PathName; }

  // The path made absolute against the current directory and normalised by
  // its text alone: empty and "." components and repeated slashes drop out,
  // ".." removes the component before it (and stays at the root). Symbolic
  // links are not followed and the file need not exist. Raises
  // nex_PrimException<atr_String, 1> naming the path when the current
  // directory cannot be read, e.g. because it has been removed.
  cow_String AbsolutePathName() const;

  bool Exists() const;
  bool IsReadable() const;
  bool IsWriteable() const;
  // For a directory: whether it can be searched.
  bool IsExecutable() const;

private:
  bool IsAccessible(int mode) const;

  cow_String m_PathName;
};

#endif
