#ifndef zdb_CheckSpace_h
#define zdb_CheckSpace_h

#include "rfm_Handle.h"
#include "utl_FileOffset.h"

#include <cstdint>
#include <vector>

class zdb_CheckBytes;

// Where one extent of an object lies in the file.
struct zdb_Extent {
  utl_FileOffset m_Location;
  utl_FileOffset m_Length;
};

// The bytes of one object as the checker reads them: the used part of each
// extent of its chain, in chain order. The extents are those the linkage
// check could follow and found inside the file, so the space may be shorter
// than the object claims; the linkage check has reported why.
class zdb_CheckSpace {
public:
  zdb_CheckSpace(zdb_CheckBytes& bytes, rfm_Handle handle, std::vector<zdb_Extent> const& extents);

  rfm_Handle Handle() const { return m_Handle; }
  utl_FileOffset Length() const { return m_Length; }
  // Copies count bytes at offset in the object; false when they are not all
  // there or cannot be read.
  bool Read(utl_FileOffset offset, char* out, std::size_t count) const;
  // The 32-bit word at offset, when it can be read.
  bool Word(utl_FileOffset offset, std::int32_t& value) const;

private:
  zdb_CheckBytes& m_Bytes;
  rfm_Handle m_Handle;
  std::vector<zdb_Extent> m_Extents;
  std::vector<utl_FileOffset> m_Starts;  // the object offset of each extent
  utl_FileOffset m_Length = 0;
};

#endif
