#include "rom_AgentBlob.h"

#include "rom_Transporter.h"

namespace {
// The space's own default quantum.
int const kDefaultQuantum = -1;
}  // namespace

rom_AgentBlob::rom_AgentBlob(rom_Transporter& transporter)
    : m_Space(transporter.Database().Space(kDefaultQuantum)) {}

rom_AgentBlob::rom_AgentBlob(rom_Transporter& transporter, rfm_Handle const& handle)
    : m_Space(transporter.Database().Space(handle, kDefaultQuantum)) {}

void rom_AgentBlob::Truncate() {
  utl_FileOffset const end = m_Space.Location();
  // What waits in the buffer goes first; the buffer then holds nothing of
  // the bytes cut off.
  m_Space.Flush();
  m_Space.Space().Truncate(end);
}
