#ifndef rfm_BufferedSpace_h
#define rfm_BufferedSpace_h

#include "cow_CountedHld.h"
#include "rfm_Space.h"

class rfm_IOBuffer;

// A space with a buffer in front of it, of the default size unless a
// caller streaming bulk data asks for more. Copies share both; the buffer
// goes before the space, so what waits in it is written.
class ZQA_EXPORT rfm_BufferedSpace {
public:
  explicit rfm_BufferedSpace(rfm_Space const& space, int bufferSize = 0);
  rfm_BufferedSpace(rfm_BufferedSpace const& other);
  rfm_BufferedSpace& operator=(rfm_BufferedSpace const& other);
  ~rfm_BufferedSpace();

  rfm_Handle Handle() const { return m_Space.Handle(); }
  utl_FileOffset Allocation() const { return m_Space.Allocation(); }

  bool ReadOnly() const;
  utl_FileOffset Length() const;
  utl_FileOffset Location() const;
  void Seek(utl_FileOffset offset) const;
  void Extend(utl_FileOffset delta) const;
  void Flush() const;
  int Read(char* buffer, int count) const;
  int Write(char const* buffer, int count) const;
  int ReadIntArray(int* values, int count) const;
  int ReadFloatArray(float* values, int count) const;
  int ReadDoubleArray(double* values, int count) const;
  void WriteIntArray(int const* values, int count) const;
  void WriteFloatArray(float const* values, int count) const;
  void WriteDoubleArray(double const* values, int count) const;

  rfm_Space const& Space() const { return m_Space; }
  // The buffer, for the library's own layers.
  rfm_IOBuffer& Buffer() const { return m_Buffer.GetRef(); }

private:
  rfm_Space m_Space;
  cow_CountedHld<rfm_IOBuffer> m_Buffer;
};

#endif
