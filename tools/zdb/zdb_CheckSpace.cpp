#include "zdb_CheckSpace.h"

#include "zdb_CheckBytes.h"

#include <algorithm>

zdb_CheckSpace::zdb_CheckSpace(zdb_CheckBytes& bytes, rfm_Handle handle, std::vector<zdb_Extent> const& extents)
    : m_Bytes(bytes), m_Handle(handle), m_Extents(extents) {
  for (zdb_Extent const& extent : m_Extents) {
    m_Starts.push_back(m_Length);
    m_Length += extent.m_Length;
  }
}

bool zdb_CheckSpace::Read(utl_FileOffset offset, char* out, std::size_t count) const {
  if (offset < 0 || offset > m_Length || static_cast<utl_FileOffset>(count) > m_Length - offset) return false;
  // The extent holding offset: the last one that starts at or before it.
  std::size_t index =
      static_cast<std::size_t>(std::upper_bound(m_Starts.begin(), m_Starts.end(), offset) - m_Starts.begin()) - 1;
  while (count > 0) {
    zdb_Extent const& extent = m_Extents[index];
    utl_FileOffset within = offset - m_Starts[index];
    std::size_t part = static_cast<std::size_t>(
        std::min<utl_FileOffset>(extent.m_Length - within, static_cast<utl_FileOffset>(count)));
    if (part > 0 && !m_Bytes.Read(extent.m_Location + within, out, part)) return false;
    out += part;
    offset += static_cast<utl_FileOffset>(part);
    count -= part;
    ++index;
  }
  return true;
}

bool zdb_CheckSpace::Word(utl_FileOffset offset, std::int32_t& value) const {
  char bytes[4];
  if (!Read(offset, bytes, sizeof bytes)) return false;
  value = zdb_Word(bytes);
  return true;
}
