#ifndef rfm_File_h
#define rfm_File_h

#include "cow_CountedHld.h"
#include "cow_String.h"
#include "rfm_FileRepr.h"
#include "utl_FileOffset.h"

// A stored file, by value: copies share one representation and the last
// copy ends it. Open chooses the representation from the name: a
// "zbxrdb://" URL is a remote file, a file that begins with the compressed
// container's magic is a compressed file, anything else a plain local file.
class ZQA_EXPORT rfm_File {
public:
  // An empty handle.
  rfm_File() = default;
  // Takes ownership of repr.
  explicit rfm_File(rfm_FileRepr* repr) : m_Repr(repr) {}

  // Opens name for reading, for update or creates it (a created file is
  // always a plain local file). With preallocate the real file grows in
  // steps of 1 MiB.
  static rfm_File Open(cow_String const& name, utl_FileAccess access, bool preallocate);
  // Opens name for reading; key is what a remote file presents to its server.
  static rfm_File Open(cow_String const& name, cow_String const& key);
  // Creates a new compressed file.
  static rfm_File CreateCompressed(cow_String const& name);

  // Appends the rest of source, from its current location, at this file's
  // current location.
  void Copy(rfm_File const& source);

  bool ReadOnly() const { return m_Repr.GetRef().ReadOnly(); }
  cow_String FileName() const { return m_Repr.GetRef().FileName(); }

  bool IsNull() const { return m_Repr.IsNull(); }
  rfm_FileRepr* Repr() const { return m_Repr.GetPtr(); }
  rfm_FileRepr* operator->() const { return m_Repr.GetPtr(); }

private:
  cow_CountedHld<rfm_FileRepr> m_Repr;
};

#endif
