#include "rfm_BufferedSpace.h"

#include "rfm_IOBuffer.h"
#include "rfm_SpaceRepr.h"

rfm_BufferedSpace::rfm_BufferedSpace(rfm_Space const& space, int bufferSize)
    : m_Space(space), m_Buffer(new rfm_IOBuffer(space.Repr(), bufferSize)), m_Window(&m_Buffer.GetRef().Window()) {}
rfm_BufferedSpace::rfm_BufferedSpace(rfm_BufferedSpace const& other) = default;
rfm_BufferedSpace& rfm_BufferedSpace::operator=(rfm_BufferedSpace const& other) = default;
// The members go in reverse order: the buffer, which writes what waits in
// it, before the space.
rfm_BufferedSpace::~rfm_BufferedSpace() = default;

bool rfm_BufferedSpace::ReadOnly() const { return Buffer().ReadOnly(); }
utl_FileOffset rfm_BufferedSpace::Length() const { return Buffer().Length(); }
utl_FileOffset rfm_BufferedSpace::Location() const { return Buffer().Location(); }
void rfm_BufferedSpace::Seek(utl_FileOffset offset) const { Buffer().Seek(offset); }
void rfm_BufferedSpace::Extend(utl_FileOffset delta) const { Buffer().Extend(delta); }
void rfm_BufferedSpace::Flush() const { Buffer().Flush(); }
int rfm_BufferedSpace::ReadThrough(char* buffer, int count) const { return Buffer().ReadBytes(buffer, count); }
int rfm_BufferedSpace::WriteThrough(char const* buffer, int count) const { return Buffer().WriteBytes(buffer, count); }
int rfm_BufferedSpace::ReadIntArray(int* values, int count) const { return Buffer().ReadIntArray(values, count); }
int rfm_BufferedSpace::ReadFloatArray(float* values, int count) const {
  return Buffer().ReadFloatArray(values, count);
}
int rfm_BufferedSpace::ReadDoubleArray(double* values, int count) const {
  return Buffer().ReadDoubleArray(values, count);
}
void rfm_BufferedSpace::WriteIntArray(int const* values, int count) const { Buffer().WriteIntArray(values, count); }
void rfm_BufferedSpace::WriteFloatArray(float const* values, int count) const {
  Buffer().WriteFloatArray(values, count);
}
void rfm_BufferedSpace::WriteDoubleArray(double const* values, int count) const {
  Buffer().WriteDoubleArray(values, count);
}
