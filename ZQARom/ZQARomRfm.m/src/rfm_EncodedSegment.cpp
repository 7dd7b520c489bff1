#include "rfm_EncodedSegment.h"

#include "ZQABasAssert.h"
#include "rfm_Codec.h"
#include "rfm_SectorArray.h"
#include "rfm_SegmentBuffer.h"
#include "rfm_SegmentBufferCache.h"
#include "rfm_SegmentReadAhead.h"

#include <algorithm>
#include <cstring>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_EncodedSegment";
}

void rfm_EncodedSegment::Arm() {
  if (m_Armed > 0) {
    ++m_Armed;
    return;
  }
  // Fetching may first save another segment to free its buffer, and that
  // can fail (a full disk): the segment counts as armed only once it holds
  // its buffer, so a failure leaves it as it was.
  rfm_SegmentBuffer* buffer = m_Cache.Fetch(m_Index);
  ZQA_ASSERT(kSourcePath, m_DecodedLength <= buffer->Size());
  m_Buffer = buffer;
  m_Armed = 1;
  if (m_Loaded) return;
  try {
    Load();
  } catch (...) {
    // A stream that cannot be loaded leaves the segment cold, so the next
    // use tries again and fails the same way instead of reading the buffer.
    Disarm();
    throw;
  }
}

void rfm_EncodedSegment::Disarm() {
  ZQA_ASSERT(kSourcePath, m_Armed > 0);
  if (--m_Armed != 0) return;
  m_Cache.Release(m_Index, this);
  m_Buffer = nullptr;
}

void rfm_EncodedSegment::Load() {
  ZQA_ASSERT(kSourcePath, m_Buffer);
  ZQA_ASSERT(kSourcePath, !m_Loaded);
  if (m_ReadAhead && m_ReadAhead->Take(m_Index, m_Buffer)) {
    m_Loaded = true;
    return;
  }
  if (m_Sectors.HasStream(m_Index)) {
    rfm_SegmentBuffer encoded;
    ReadStream(m_Sectors, m_Index, m_Buffer->Size(), &encoded);
    if (!m_Codec.Decode(m_Buffer, encoded)) m_Sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
  } else {
    // A segment never saved reads as zeros, so no byte of the file is
    // undefined.
    m_Buffer->Fill(0);
  }
  m_Loaded = true;
}

void rfm_EncodedSegment::ReadStream(rfm_SectorArray& sectors, int index, int decodedSize,
                                    rfm_SegmentBuffer* encoded) {
  rfm_SectorRead reader = sectors.GetStreamRead(index);
  // The stored length counts its own four bytes. Any stream this library
  // wrote is shorter than the encoder's worst case for a whole segment.
  if (reader.Length() < rfm_SectorRead::kLengthSize ||
      reader.Length() - rfm_SectorRead::kLengthSize > decodedSize + decodedSize / 10 + 12) {
    sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
  }
  int encodedLength = reader.Length() - rfm_SectorRead::kLengthSize;
  rfm_SegmentBuffer stream(encodedLength);
  if (reader.Read(stream.Data(), encodedLength) != encodedLength) sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
  encoded->Swap(stream);
}

void rfm_EncodedSegment::Save(rfm_SegmentBuffer* buffer) {
  ZQA_ASSERT(kSourcePath, buffer);
  ZQA_ASSERT(kSourcePath, m_Dirty);
  rfm_SegmentBuffer encoded;
  m_Codec.Encode(&encoded, *buffer, m_DecodedLength);
  rfm_SectorWrite writer = m_Sectors.GetStreamWrite(m_Index);
  writer.Write(encoded.Data(), encoded.Size());
  writer.Commit();
  m_Dirty = false;
}

void rfm_EncodedSegment::Flush() {
  if (!m_Dirty) return;
  Arm();
  try {
    Save(m_Buffer);
  } catch (...) {
    Disarm();
    throw;
  }
  Disarm();
}

void rfm_EncodedSegment::DiscardBuffer(int, rfm_SegmentBuffer* buffer) {
  ZQA_ASSERT(kSourcePath, buffer);
  ZQA_ASSERT(kSourcePath, !m_Armed);
  // A buffer that never loaded holds nothing of the segment's to save.
  if (m_Dirty && m_Loaded) Save(buffer);
  m_Loaded = false;
}

void rfm_EncodedSegment::Read(char* out, int first, int length) const {
  ZQA_ASSERT(kSourcePath, m_Armed);
  ZQA_ASSERT(kSourcePath, first + length <= m_DecodedLength);
  if (length == 0) return;
  std::memcpy(out, m_Buffer->Data() + first, static_cast<std::size_t>(length));
}

void rfm_EncodedSegment::Write(char const* in, int firstOut, int length) {
  ZQA_ASSERT(kSourcePath, m_Armed);
  ZQA_ASSERT(kSourcePath, firstOut + length <= m_Buffer->Size());
  if (length == 0) return;
  std::memcpy(m_Buffer->Data() + firstOut, in, static_cast<std::size_t>(length));
  m_Dirty = true;
  m_DecodedLength = std::max(m_DecodedLength, firstOut + length);
}

void rfm_EncodedSegment::Extend(int length) {
  // An unchanged length leaves the stream right: a reader that only passes
  // the end of a full last segment must not make it dirty.
  if (length == m_DecodedLength) return;
  m_DecodedLength = length;
  if (m_Sectors.HasStream(m_Index)) m_Dirty = true;
}
