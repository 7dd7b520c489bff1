#ifndef rfm_SectorArray_h
#define rfm_SectorArray_h

#include "omi_BlockedArray.h"
#include "rfm_SectorFile.h"
#include "rfm_SectorRead.h"
#include "rfm_SectorWrite.h"

// Numbered byte streams in a sector file, with a small opaque metadata
// block for the layer above. Sector 0 holds the header; its payload is
//
//  offset  size  content
//       0     8  magic "ZBXTSA00", no terminator
//       8     4  header version, 1
//      12     4  metadata size M
//      16     4  number of streams N
//      20     M  metadata
//    20+M   4 N  first sector of each stream, 0 for none
//
// The stream table holds as many whole entries as fit in sector 0 and goes
// on at offset 0 of each further sector of sector 0's chain. All words are
// little-endian. The table lives in memory and reaches the file at Flush.
//
// Invariant: every non-zero cell of m_Streams names an existing sector
// after sector 0, and every stream index with a cell is below m_NumStreams.
class rfm_SectorArray {
public:
  static constexpr int kSectorSize = 4096;
  // The file's first bytes; the last two are the container's version digits.
  static constexpr char kMagic[] = "ZBXTSA00";

  // Creates the file, truncating an old one, with room for metaSize bytes
  // of metadata.
  rfm_SectorArray(cow_String const& name, int metaSize);
  // Opens an existing file with a utl_FileAccess value and reads its header
  // and stream table.
  rfm_SectorArray(cow_String const& name, utl_FileAccess access);

  bool HasStream(int index) const;
  rfm_SectorRead GetStreamRead(int index);
  // A writer at the start of the stream, which is made when it is missing.
  rfm_SectorWrite GetStreamWrite(int index);

  // Up to the metadata size of bytes; the count moved.
  int WriteMeta(char const* data, int count);
  int ReadMeta(char* data, int count);

  // Writes the header and the stream table.
  void Flush();
  // Gives back sectors after last; sectors are never freed, so nothing.
  void Trim(rfm_Sector const&) {}

  int NumStreams() const { return m_NumStreams; }
  rfm_SectorFile& File() { return m_File; }

private:
  static constexpr int kHeaderSize = 20;

  void WriteHeader();
  void ReadHeader();
  void WriteStreams();
  void ReadStreams();
  rfm_Sector SectorZero() { return rfm_Sector(0, &m_File); }

  rfm_SectorFile m_File;
  int m_MetaSize = 0;
  int m_NumStreams = 0;
  omi_BlockedArray<unsigned int> m_Streams;
};

#endif
