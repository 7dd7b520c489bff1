#ifndef rfm_BufferedSpace_h
#define rfm_BufferedSpace_h

#include "cow_CountedHld.h"
#include "rfm_IOBuffer.h"
#include "rfm_Space.h"

// A space with a buffer in front of it, of the default size unless a
// caller streaming bulk data asks for more. Copies share both; the buffer
// goes before the space, so what waits in it is written. Through its space
// it holds a share of the database (see rfm_Database).
class ZQA_EXPORT rfm_BufferedSpace {
public:
  explicit rfm_BufferedSpace(rfm_Space const& space, int bufferSize = 0)
      : m_Space(space), m_Buffer(new rfm_IOBuffer(space.Repr(), bufferSize)) {}

  rfm_Handle Handle() const { return m_Space.Handle(); }
  utl_FileOffset Allocation() const { return m_Space.Allocation(); }

  bool ReadOnly() const { return Buffer().ReadOnly(); }
  utl_FileOffset Length() const { return Buffer().Length(); }
  utl_FileOffset Location() const { return Buffer().Location(); }
  void Seek(utl_FileOffset offset) const { Buffer().Seek(offset); }
  void Extend(utl_FileOffset delta) const { Buffer().Extend(delta); }
  void Flush() const { Buffer().Flush(); }
  int Read(char* buffer, int count) const { return Buffer().ReadBytes(buffer, count); }
  int Write(char const* buffer, int count) const { return Buffer().WriteBytes(buffer, count); }
  int ReadIntArray(int* values, int count) const { return Buffer().ReadIntArray(values, count); }
  int ReadFloatArray(float* values, int count) const { return Buffer().ReadFloatArray(values, count); }
  int ReadDoubleArray(double* values, int count) const { return Buffer().ReadDoubleArray(values, count); }
  void WriteIntArray(int const* values, int count) const { Buffer().WriteIntArray(values, count); }
  void WriteFloatArray(float const* values, int count) const { Buffer().WriteFloatArray(values, count); }
  void WriteDoubleArray(double const* values, int count) const { Buffer().WriteDoubleArray(values, count); }

  rfm_Space const& Space() const { return m_Space; }
  rfm_IOBuffer& Buffer() const { return m_Buffer.GetRef(); }

private:
  rfm_Space m_Space;
  cow_CountedHld<rfm_IOBuffer> m_Buffer;
};

#endif
