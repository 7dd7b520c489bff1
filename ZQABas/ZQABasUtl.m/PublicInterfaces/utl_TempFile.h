#ifndef utl_TempFile_h
#define utl_TempFile_h

#include "ZQABasExport.h"
#include "cow_String.h"

// A new, empty file of a name no other file has, in the directory named by
// TMPDIR (or /tmp when it is not set or empty), removed again when the
// object goes. The name is the directory, "/", the prefix and six characters
// that make it unique. The file is created but not held open: users open it
// by Name() or through OpenIfPresent().
//
// Invariant: Name() names the file this object created, or is empty once
// the name has been removed; the destructor removes whatever is at the name.
class ZQA_EXPORT utl_TempFile {
public:
  // Raises nex_PrimException<atr_String, 1> naming the directory and the
  // system's reason when no file can be created there.
  explicit utl_TempFile(cow_String const& prefix);
  ~utl_TempFile();
  utl_TempFile(utl_TempFile const&) = delete;
  utl_TempFile& operator=(utl_TempFile const&) = delete;

  cow_String const& Name() const noexcept { return m_Name; }

  // A new read-only, close-on-exec descriptor on the file, which the caller
  // closes; negative when the file cannot be opened (it has been removed).
  int OpenIfPresent() const;

  // The bytes free to an unprivileged user on the file system that holds the
  // file. Raises nex_PrimException<atr_String, 1> naming the file when the
  // system cannot tell.
  unsigned long long AvailableSpace() const;

  // Removes the file's name now: descriptors open on it keep working, and
  // the system frees the file when the last of them closes, also when the
  // process ends without cleaning up. Name() is empty from then on.
  void RemoveName();

private:
  cow_String m_Name;
};

#endif
