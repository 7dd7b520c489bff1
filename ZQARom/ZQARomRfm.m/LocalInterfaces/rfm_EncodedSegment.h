#ifndef rfm_EncodedSegment_h
#define rfm_EncodedSegment_h

#include "rfm_SegmentBufferHolder.h"

class rfm_Codec;
class rfm_SectorArray;
class rfm_SegmentBuffer;
class rfm_SegmentBufferCache;
class rfm_SegmentReadAhead;

// One fixed-size slice of a compressed file's logical bytes: stored encoded
// as the stream of its index, decoded into a cache buffer while in use.
// A segment is armed while someone reads or writes it; only then does it
// hold a buffer. Disarmed, its bytes stay in the cache until the cache
// needs the buffer, and are saved then if they changed.
//
//  state        m_Armed  m_Loaded  m_Dirty  m_Buffer
//  cold            0      false     false    null
//  warm            0      true      either   null   (bytes in the cache)
//  armed          >0      true      either   set
// Extend on a cold segment with a stream makes it dirty but not loaded:
// arming loads it, and a flush rewrites it.
//
// Invariants: m_Armed > 0 exactly while m_Buffer is set; m_DecodedLength
// never exceeds the buffer's size while armed; m_Dirty means the stream
// lacks what the buffer holds (or the stream's length is stale).
class rfm_EncodedSegment : public rfm_SegmentBufferHolder {
public:
  // readAhead, when given, may hold the segment's decoded bytes already.
  rfm_EncodedSegment(int index, rfm_SectorArray& sectors, rfm_SegmentBufferCache& cache, rfm_Codec& codec,
                     int decodedLength, rfm_SegmentReadAhead* readAhead)
      : m_Index(index), m_Sectors(sectors), m_Cache(cache), m_Codec(codec), m_ReadAhead(readAhead),
        m_DecodedLength(decodedLength) {}
  virtual ~rfm_EncodedSegment() = default;
  rfm_EncodedSegment(rfm_EncodedSegment const&) = delete;
  rfm_EncodedSegment& operator=(rfm_EncodedSegment const&) = delete;

  void Arm();
  void Disarm();
  void Read(char* out, int first, int length) const;
  void Write(char const* in, int firstOut, int length);
  // Sets the decoded length, also downwards.
  void Extend(int length);
  // Saves the segment when it changed.
  void Flush();

  void DiscardBuffer(int index, rfm_SegmentBuffer* buffer) override;

  // The stored stream of index into *encoded; a length that no segment of
  // decodedSize bytes can have, or a stream cut short, is damage.
  static void ReadStream(rfm_SectorArray& sectors, int index, int decodedSize, rfm_SegmentBuffer* encoded);

  int Index() const { return m_Index; }
  int DecodedLength() const { return m_DecodedLength; }
  bool IsArmed() const { return m_Armed > 0; }
  bool IsDirty() const { return m_Dirty; }
  bool IsLoaded() const { return m_Loaded; }

private:
  void Load();
  void Save(rfm_SegmentBuffer* buffer);

  int m_Index;
  rfm_SectorArray& m_Sectors;
  rfm_SegmentBufferCache& m_Cache;
  rfm_Codec& m_Codec;
  rfm_SegmentReadAhead* m_ReadAhead;
  rfm_SegmentBuffer* m_Buffer = nullptr;
  int m_DecodedLength;
  bool m_Loaded = false;
  bool m_Dirty = false;
  int m_Armed = 0;
};

#endif
