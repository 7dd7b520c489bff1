#include "rfm_FileReprEncoded.h"

#include "ZQABasAssert.h"
#include "rfm_DestructorFlush.h"
#include "rfm_FileException.h"
#include "utl_File.h"

#include <algorithm>
#include <cstring>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileReprEncoded";
// Files are recognised by the magic without its version digits.
constexpr int kEncodedMagicLength = sizeof rfm_SectorArray::kMagic - 3;
}  // namespace

rfm_FileReprEncoded::rfm_FileReprEncoded(cow_String const& name, rfm_Codec* codec, int segmentSize)
    : rfm_FileRepr(name), m_SegmentSize(segmentSize), m_Table(name, codec, segmentSize) {
  Seek(0);
}

rfm_FileReprEncoded::rfm_FileReprEncoded(cow_String const& name, utl_FileAccess access, rfm_Codec* codec)
    : rfm_FileRepr(name), m_Table(name, codec, access), m_ReadOnly(access == utl_FileAccessRead) {
  m_SegmentSize = m_Table.SegmentSize();
  m_LogicalFileSize = m_PhysicalFileSize = m_Table.FileSize();
  Seek(0);
}

rfm_FileReprEncoded::~rfm_FileReprEncoded() {
  if (!m_ReadOnly) rfm_FlushInDestructor([this] { Flush(); });
  m_CurrentSegment.Reset();
  m_FirstSegment.Reset();
}

bool rfm_FileReprEncoded::IsEncoded(cow_String const& name) {
  utl_File file(name, utl_FileAccessRead, utl_FileShareNone);
  char head[kEncodedMagicLength];
  return file.Read(head, kEncodedMagicLength) == kEncodedMagicLength &&
         std::memcmp(head, rfm_SectorArray::kMagic, kEncodedMagicLength) == 0;
}

void rfm_FileReprEncoded::CheckWritable(int line) const {
  if (m_ReadOnly) rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, line);
}

void rfm_FileReprEncoded::SetCurrentSegment(int index) {
  if (m_CurrentSegment && m_CurrentSegment->Index() == index) return;
  if (index == 0 && m_FirstSegment) {
    m_CurrentSegment = m_FirstSegment.Get();
    return;
  }
  m_CurrentSegment = m_Table.GetSegment(index);
  if (index == 0) m_FirstSegment = m_CurrentSegment.Get();
}

void rfm_FileReprEncoded::LeaveFullSegment() {
  if (m_SegmentOffset < m_SegmentSize) return;
  int next = m_CurrentSegment->Index() + 1;
  SetCurrentSegment(next);
  m_SegmentOffset = 0;
  // A reader passing from one segment into the next reads in order.
  if (m_ReadOnly) m_Table.ReadAhead(next + 1);
}

void rfm_FileReprEncoded::Seek(utl_FileOffset location) {
  ZQA_ASSERT(kSourcePath, location <= m_LogicalFileSize);
  ZQA_ASSERT(kSourcePath, location >= 0);
  m_Location = location;
  int index = GetSegmentIndex(location);
  SetCurrentSegment(index);
  m_SegmentOffset = static_cast<int>(location - GetSegmentStart(index));
}

int rfm_FileReprEncoded::Read(char* buffer, int count) {
  if (count < 1) return count;
  int moved = 0;
  while (moved < count) {
    LeaveFullSegment();
    int available = m_CurrentSegment->DecodedLength() - m_SegmentOffset;
    if (available <= 0) return moved;
    int step = std::min(count - moved, available);
    m_CurrentSegment->Read(buffer + moved, m_SegmentOffset, step);
    moved += step;
    m_Location += step;
    m_SegmentOffset += step;
  }
  return count;
}

int rfm_FileReprEncoded::Write(char const* buffer, int count) {
  CheckWritable(__LINE__);
  if (count < 1) return 0;
  int moved = 0;
  while (moved < count) {
    LeaveFullSegment();
    int step = std::min(count - moved, m_SegmentSize - m_SegmentOffset);
    m_CurrentSegment->Write(buffer + moved, m_SegmentOffset, step);
    moved += step;
    m_Location += step;
    m_SegmentOffset += step;
    // At every step: moving on to the next segment can fail (a full disk
    // while a segment is saved to free a buffer), and the bytes already
    // written then belong to the file.
    if (m_Location > m_LogicalFileSize) m_LogicalFileSize = m_PhysicalFileSize = m_Location;
  }
  return count;
}

bool rfm_FileReprEncoded::FileExtend(utl_FileOffset delta) {
  CheckWritable(__LINE__);
  if (delta >= 0) {
    utl_FileOffset target = m_LogicalFileSize + delta;
    int index = GetSegmentIndex(target);
    m_Table.GetSegment(index)->Extend(static_cast<int>(target - GetSegmentStart(index)));
    m_LogicalFileSize = m_PhysicalFileSize = target;
    return false;
  }
  // A shrink counts from the location, and must leave a whole segment
  // after the current one to drop.
  Seek(m_Location + delta);
  m_Table.Trim(m_CurrentSegment->Index() + 1);
  m_CurrentSegment->Extend(m_SegmentOffset);
  m_LogicalFileSize = m_PhysicalFileSize = m_Location;
  return false;
}

bool rfm_FileReprEncoded::Stores(utl_FileOffset offset, utl_FileOffset length) {
  if (length <= 0) return true;
  int const last = GetSegmentIndex(offset + length - 1);
  for (int index = GetSegmentIndex(offset); index <= last; ++index) {
    if (!m_Table.HoldsData(index)) return false;
  }
  return true;
}

void rfm_FileReprEncoded::Trim() { CheckWritable(__LINE__); }

void rfm_FileReprEncoded::Flush() {
  CheckWritable(__LINE__);
  m_Table.Flush();
}
