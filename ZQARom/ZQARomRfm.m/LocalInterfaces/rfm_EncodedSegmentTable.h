#ifndef rfm_EncodedSegmentTable_h
#define rfm_EncodedSegmentTable_h

#include "rfm_EncodedSegment.h"
#include "rfm_SectorArray.h"
#include "rfm_SegmentBufferCache.h"
#include "rfm_SegmentReadAhead.h"

#include <cstdint>
#include <map>
#include <memory>

class rfm_Codec;

// The segments of a compressed file: segment i holds the logical bytes from
// i times the segment size and is stream i of the sector array. The
// geometry is kept in the sector array's metadata block:
//
//  offset  size  content
//       0     4  magic 0x6141C1A5
//       4     4  version, 1
//       8     4  segment size in bytes
//      12     4  number of segments
//      16     4  decoded length of the last segment
//
// Invariants: the logical size is the segment size times (number of
// segments - 1) plus the last segment's length; a new table has no
// segments and a last length of one segment size, which gives 0. Every
// segment before the last is full. Memory follows the segments in use and
// the streams the file holds, never the number of segments the header
// claims: segment objects are made as segments are used.
class rfm_EncodedSegmentTable {
public:
  // Creates the file; takes ownership of codec.
  rfm_EncodedSegmentTable(cow_String const& name, rfm_Codec* codec, int segmentSize);
  // Opens an existing file with a utl_FileAccess value; takes ownership of
  // codec.
  rfm_EncodedSegmentTable(cow_String const& name, rfm_Codec* codec, utl_FileAccess access);
  ~rfm_EncodedSegmentTable();
  rfm_EncodedSegmentTable(rfm_EncodedSegmentTable const&) = delete;
  rfm_EncodedSegmentTable& operator=(rfm_EncodedSegmentTable const&) = delete;

  static constexpr int MetadataSize() { return 20; }

  // The segment at index, made when needed; an index past the end grows the
  // file, and the segment that was last becomes full.
  rfm_EncodedSegment* GetSegment(int index);
  // On a file opened for reading, starts decoding segment index ahead of
  // its use, unless it is decoded already or has no stream.
  void ReadAhead(int index);
  // Drops the segments from index on.
  void Trim(int index);
  // Saves every changed segment, the geometry and the stream table.
  void Flush();
  std::int64_t FileSize();
  // The logical bytes that segments with data cover: up to the end of the
  // last segment that has a stream or changes not yet saved, at most the
  // file's size. Beyond it a segment reads as zeros it never stored.
  std::int64_t StoredSize();
  // Whether segment index has data: a stream, or changes not yet saved.
  bool HoldsData(int index) const;

  int SegmentSize() const { return m_SegmentSize; }
  int NumSegments() const { return m_NumSegments; }
  rfm_SegmentBufferCache const& Cache() const { return m_Cache; }
  rfm_SectorArray& Sectors() { return m_Sectors; }

private:
  void ReadHeader();
  void WriteHeader();
  void UpdateLastSegmentSize();
  // The segment at index when it was used already, else null.
  rfm_EncodedSegment* Existing(int index) const;

  // First, so that it is owned even when opening the file fails.
  std::unique_ptr<rfm_Codec> m_Codec;
  rfm_SectorArray m_Sectors;
  rfm_SegmentBufferCache m_Cache;
  int m_SegmentSize;
  int m_NumSegments = 0;
  int m_LastSegmentSize;
  // Only on a file opened for reading, whose streams never change.
  std::unique_ptr<rfm_SegmentReadAhead> m_ReadAhead;
  // The segments used so far, by index, all below m_NumSegments.
  std::map<int, std::unique_ptr<rfm_EncodedSegment> > m_Segments;
};

#endif
