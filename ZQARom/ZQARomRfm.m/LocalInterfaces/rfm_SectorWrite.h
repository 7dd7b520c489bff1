#ifndef rfm_SectorWrite_h
#define rfm_SectorWrite_h

#include "rfm_SectorRead.h"

// Writes a stream of a sector file from its start, following the stream's
// old chain while it lasts and adding sectors after it. The stored length
// is written by Commit only, once every byte is written: a writer that
// fails on the way (a full disk) leaves the old length, never one that
// counts bytes that did not arrive. A stream rewritten shorter keeps its
// old tail sectors linked.
//
// Invariant: m_Length is 4 plus the bytes written.
class rfm_SectorWrite {
public:
  explicit rfm_SectorWrite(rfm_Sector const& first) : m_First(first), m_Current(first) {}

  int Write(char const* buffer, int count);
  // Stores the length in the first sector.
  void Commit();

private:
  rfm_Sector m_First;
  rfm_Sector m_Current;
  int m_Position = rfm_SectorRead::kLengthSize;
  int m_Length = rfm_SectorRead::kLengthSize;
};

#endif
