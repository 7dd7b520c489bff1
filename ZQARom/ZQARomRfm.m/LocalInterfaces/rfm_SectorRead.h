#ifndef rfm_SectorRead_h
#define rfm_SectorRead_h

#include "rfm_Sector.h"

// Reads a stream of a sector file from its start. A stream's first sector
// begins with its stored length, which counts its own four bytes; data
// follows, and continues at offset 0 of each further sector of the chain.
//
// Invariant: m_Position is the offset in m_Current of the next byte.
class rfm_SectorRead {
public:
  static constexpr int kLengthSize = 4;

  // Reads the stored length from first.
  explicit rfm_SectorRead(rfm_Sector const& first);

  // The stored length: the data's length plus 4.
  int Length() const { return m_Length; }
  // Moves up to count bytes; short when the chain or the file ends. The
  // stored length is not consulted: the caller knows how much to read.
  int Read(char* buffer, int count);

private:
  rfm_Sector m_Current;
  int m_Position = kLengthSize;
  int m_Length = 0;
};

#endif
