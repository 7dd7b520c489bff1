#ifndef rom_AgentBlob_h
#define rom_AgentBlob_h

#include "cls_AgentBlob.h"
#include "rfm_BufferedSpace.h"

class rom_Transporter;

// A blob's bytes: a space of the record store behind a buffer. Every
// operation goes to the buffered space.
class rom_AgentBlob : public cls_AgentBlob {
public:
  // A new space.
  explicit rom_AgentBlob(rom_Transporter& transporter);
  // The space at handle.
  rom_AgentBlob(rom_Transporter& transporter, rfm_Handle const& handle);

  long long Length() const override { return m_Space.Length(); }
  void Seek(long long const& offset) const override { m_Space.Seek(offset); }
  int Read(char* buffer, int count) const override { return m_Space.Read(buffer, count); }
  int Write(char const* buffer, int count) override { return m_Space.Write(buffer, count); }
  int ReadIntArray(int* values, int count) const override { return m_Space.ReadIntArray(values, count); }
  int ReadFloatArray(float* values, int count) const override { return m_Space.ReadFloatArray(values, count); }
  int ReadDoubleArray(double* values, int count) const override { return m_Space.ReadDoubleArray(values, count); }
  void WriteIntArray(int const* values, int count) override { m_Space.WriteIntArray(values, count); }
  void WriteFloatArray(float const* values, int count) override { m_Space.WriteFloatArray(values, count); }
  void WriteDoubleArray(double const* values, int count) override { m_Space.WriteDoubleArray(values, count); }
  void Truncate() override;

  rfm_Handle Handle() const { return m_Space.Handle(); }
  void Flush() const { m_Space.Flush(); }

private:
  rfm_BufferedSpace m_Space;
};

#endif
