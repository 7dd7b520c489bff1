#ifndef rfm_File_h
#define rfm_File_h

#include "cow_CountedHld.h"
#include "cow_String.h"
#include "rfm_FileKind.h"
#include "utl_FileOffset.h"

class rfm_FileRepr;

// A stored file, by value: copies share one representation and the last
// copy ends it. Open chooses the representation from the name: a
// "zbxrdb://" URL is a remote file, a file that begins with the compressed
// container's magic is a compressed file, anything else a plain local file.
class ZQA_EXPORT rfm_File {
public:
  // An empty handle.
  rfm_File();
  // Takes ownership of repr.
  explicit rfm_File(rfm_FileRepr* repr);
  rfm_File(rfm_File const& other);
  rfm_File& operator=(rfm_File const& other);
  ~rfm_File();

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

  bool ReadOnly() const;
  cow_String FileName() const;
  rfm_FileKind Kind() const;

  // Bytes and typed values at the current location, which each moves on.
  // Numbers are stored little-endian whatever the host; a fixed string
  // takes exactly width bytes, cut or zero-filled. Length is the logical
  // length. An array read answers the whole elements read, short at the
  // end; a scalar read past the end raises.
  utl_FileOffset Length() const;
  utl_FileOffset Location() const;
  void Seek(utl_FileOffset offset) const;
  void Flush() const;
  int Read(char* buffer, int count) const;
  int Write(char const* buffer, int count) const;
  int ReadInt() const;
  float ReadFloat() const;
  double ReadDouble() const;
  cow_String ReadFixedString(int width) const;
  int ReadIntArray(int* values, int count) const;
  int ReadFloatArray(float* values, int count) const;
  int ReadDoubleArray(double* values, int count) const;
  void WriteInt(int value) const;
  void WriteFloat(float value) const;
  void WriteDouble(double value) const;
  void WriteFixedString(cow_String const& text, int width) const;
  void WriteIntArray(int const* values, int count) const;
  void WriteFloatArray(float const* values, int count) const;
  void WriteDoubleArray(double const* values, int count) const;

  bool IsNull() const { return m_Repr.IsNull(); }
  // The representation, for the library's own layers.
  rfm_FileRepr* Repr() const { return m_Repr.GetPtr(); }
  rfm_FileRepr* operator->() const { return m_Repr.GetPtr(); }

private:
  cow_CountedHld<rfm_FileRepr> m_Repr;
};

#endif
