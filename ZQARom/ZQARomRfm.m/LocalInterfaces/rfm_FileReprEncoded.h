#ifndef rfm_FileReprEncoded_h
#define rfm_FileReprEncoded_h

#include "rfm_ArmedSegment.h"
#include "rfm_EncodedSegmentTable.h"
#include "rfm_FileRepr.h"

class rfm_Codec;

// A compressed file: the logical bytes are cut into segments of a fixed
// size, each stored encoded (see rfm_EncodedSegmentTable). The cursor
// moves across segments; the current segment stays armed, and so does
// segment 0 once entered, since the database's block 0 lives there.
//
// Invariant: m_SegmentOffset is the location less the current segment's
// start. A transfer that ends at a segment's end stays there, and the next
// transfer moves on: so a damaged segment is reported by the read that
// reaches into it, not by the one before.
//
// Compressed files keep no transfer-check record (FTPCheckSet and
// FTPCheckCheck do nothing), and FileExtend never reports a grown file. A
// reader sees the file as it was when opened.
class rfm_FileReprEncoded : public rfm_FileRepr {
public:
  static constexpr int kDefaultSegmentSize = 0x10000;

  // Creates name, truncating an old file; takes ownership of codec.
  rfm_FileReprEncoded(cow_String const& name, rfm_Codec* codec, int segmentSize);
  // Opens name with a utl_FileAccess value; takes ownership of codec.
  rfm_FileReprEncoded(cow_String const& name, utl_FileAccess access, rfm_Codec* codec);
  ~rfm_FileReprEncoded() override;

  bool ReadOnly() const override { return m_ReadOnly; }
  rfm_FileKind Kind() const override { return rfm_FileKindCompressed; }
  void Seek(utl_FileOffset location) override;
  void Flush() override;
  void Extend(utl_FileOffset delta) override { FileExtend(delta); }
  int Read(char* buffer, int count) override;
  int Write(char const* buffer, int count) override;
  bool FileExtend(utl_FileOffset delta) override;
  // Up to the end of the last segment that holds data: a segment never
  // written has no bytes, only a place.
  utl_FileOffset LengthStored() override { return m_Table.StoredSize(); }
  bool Stores(utl_FileOffset offset, utl_FileOffset length) override;
  void Trim() override;

  // Whether the file begins with the compressed container's magic. Only
  // the magic's first six bytes, "ZBXTSA", decide, not its version digits.
  static bool IsEncoded(cow_String const& name);

  rfm_EncodedSegmentTable& Table() { return m_Table; }

private:
  int GetSegmentIndex(utl_FileOffset location) const { return static_cast<int>(location / m_SegmentSize); }
  utl_FileOffset GetSegmentStart(int index) const { return utl_FileOffset(index) * m_SegmentSize; }
  void SetCurrentSegment(int index);
  // Moves to the next segment when the current one is passed in full.
  void LeaveFullSegment();
  void CheckWritable(int line) const;

  int m_SegmentSize = kDefaultSegmentSize;
  rfm_EncodedSegmentTable m_Table;
  // After the table: the arming pointers go first, while their segments live.
  rfm_ArmedSegment m_FirstSegment;
  rfm_ArmedSegment m_CurrentSegment;
  int m_SegmentOffset = 0;
  bool m_ReadOnly = false;
};

#endif
