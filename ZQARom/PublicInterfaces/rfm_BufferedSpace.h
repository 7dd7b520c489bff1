#ifndef rfm_BufferedSpace_h
#define rfm_BufferedSpace_h

#include "cow_CountedHld.h"
#include "rfm_BufferWindow.h"
#include "rfm_Space.h"

class rfm_IOBuffer;

// A space with a buffer in front of it, of the default size unless a
// caller streaming bulk data asks for more. Copies share both; the buffer
// goes before the space, so what waits in it is written. Through its space
// it holds a share of the database (see rfm_Database).
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
  // Bytes. Calls of a few bytes are this library's hot path: those that
  // fit the buffer are an inline copy, since a call out of line for each
  // would cost about half their speed.
  int Read(char* buffer, int count) const {
    if (!m_Window->Fits(rfm_BufferWindow::kReading, buffer, count)) return ReadThrough(buffer, count);
    m_Window->CopyOut(buffer, count);
    return count;
  }
  int Write(char const* buffer, int count) const {
    if (!m_Window->Fits(rfm_BufferWindow::kWriting, buffer, count)) return WriteThrough(buffer, count);
    m_Window->CopyIn(buffer, count);
    return count;
  }
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
  int ReadThrough(char* buffer, int count) const;
  int WriteThrough(char const* buffer, int count) const;

  rfm_Space m_Space;
  cow_CountedHld<rfm_IOBuffer> m_Buffer;
  rfm_BufferWindow* m_Window;  // the buffer's, shared with the copies
};

#endif
