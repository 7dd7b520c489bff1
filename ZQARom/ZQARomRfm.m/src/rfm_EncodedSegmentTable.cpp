#include "rfm_EncodedSegmentTable.h"

#include "ZQABasAssert.h"
#include "rfm_Codec.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"

#include <algorithm>
#include <exception>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_EncodedSegmentTable";

constexpr std::int32_t MAGIC = 0x6141C1A5;
constexpr std::int32_t CURRENT_VERSION = 1;
enum { kMagicWord, kVersionWord, kSegmentSizeWord, kNumSegmentsWord, kLastSegmentSizeWord, kHeaderWords };
constexpr int kWordSize = 4;
// Files are written with 64 KiB segments. A segment costs its size in
// memory for each buffer, so a header that claims more than this is taken
// for damage rather than trusted.
constexpr int kLargestSegmentSize = 1 << 24;

}  // namespace

rfm_EncodedSegmentTable::rfm_EncodedSegmentTable(cow_String const& name, rfm_Codec* codec, int segmentSize)
    : m_Codec(codec), m_Sectors(name, MetadataSize()), m_Cache(segmentSize), m_SegmentSize(segmentSize),
      m_LastSegmentSize(segmentSize) {
  ZQA_ASSERT(kSourcePath, segmentSize > 0 && segmentSize <= kLargestSegmentSize);
}

rfm_EncodedSegmentTable::rfm_EncodedSegmentTable(cow_String const& name, rfm_Codec* codec, utl_FileAccess access)
    : m_Codec(codec), m_Sectors(name, access), m_SegmentSize(0), m_LastSegmentSize(0) {
  ReadHeader();
  if (access == utl_FileAccessRead) m_ReadAhead.reset(new rfm_SegmentReadAhead(*m_Codec));
}

rfm_EncodedSegmentTable::~rfm_EncodedSegmentTable() = default;

void rfm_EncodedSegmentTable::ReadHeader() {
  char words[kHeaderWords * kWordSize];
  std::int32_t tmp[kHeaderWords];
  int cnt = m_Sectors.ReadMeta(words, sizeof words);
  ZQA_ASSERT(kSourcePath, cnt == sizeof(tmp));
  for (int word = 0; word < kHeaderWords; ++word) {
    tmp[word] = rfm_IntConverter::Internalize(rfm_FileOrder(), words + word * kWordSize);
  }
  ZQA_ASSERT(kSourcePath, tmp[0] == MAGIC);
  ZQA_ASSERT(kSourcePath, tmp[1] == CURRENT_VERSION);
  m_SegmentSize = tmp[kSegmentSizeWord];
  m_NumSegments = tmp[kNumSegmentsWord];
  m_LastSegmentSize = tmp[kLastSegmentSizeWord];
  if (m_SegmentSize <= 0 || m_SegmentSize > kLargestSegmentSize) {
    m_Sectors.File().RaiseCorrupt("the segment size is impossible");
  }
  if (m_NumSegments < 0 || m_LastSegmentSize < 0 || m_LastSegmentSize > m_SegmentSize ||
      (m_NumSegments == 0 && m_LastSegmentSize != m_SegmentSize)) {
    m_Sectors.File().RaiseCorrupt("the segment count or the last segment's length is impossible");
  }
  m_Cache = rfm_SegmentBufferCache(m_SegmentSize);
}

void rfm_EncodedSegmentTable::WriteHeader() {
  UpdateLastSegmentSize();
  std::int32_t const tmp[kHeaderWords] = {MAGIC, CURRENT_VERSION, m_SegmentSize, m_NumSegments, m_LastSegmentSize};
  char words[sizeof tmp];
  for (int word = 0; word < kHeaderWords; ++word) {
    rfm_IntConverter::Externalize(rfm_FileOrder(), words + word * kWordSize, tmp[word]);
  }
  m_Sectors.WriteMeta(words, sizeof words);
}

void rfm_EncodedSegmentTable::UpdateLastSegmentSize() {
  if (m_NumSegments > 0 && static_cast<int>(m_Segments.size()) == m_NumSegments && m_Segments.back()) {
    m_LastSegmentSize = m_Segments.back()->DecodedLength();
  }
}

rfm_EncodedSegment* rfm_EncodedSegmentTable::GetSegment(int index) {
  ZQA_ASSERT(kSourcePath, index >= 0);
  if (index >= m_NumSegments) {
    // The last segment is no longer last: it counts as full from now on.
    if (m_NumSegments > 0 && static_cast<int>(m_Segments.size()) == m_NumSegments && m_Segments.back()) {
      m_Segments.back()->Extend(m_SegmentSize);
    }
    m_LastSegmentSize = 0;
    m_NumSegments = index + 1;
  }
  if (index >= static_cast<int>(m_Segments.size())) m_Segments.resize(static_cast<std::size_t>(index) + 1);
  std::unique_ptr<rfm_EncodedSegment>& segment = m_Segments[static_cast<std::size_t>(index)];
  if (!segment) {
    int length = index >= m_NumSegments - 1 ? m_LastSegmentSize : m_SegmentSize;
    segment.reset(new rfm_EncodedSegment(index, m_Sectors, m_Cache, *m_Codec, length, m_ReadAhead.get()));
  }
  return segment.get();
}

void rfm_EncodedSegmentTable::ReadAhead(int index) {
  if (!m_ReadAhead || m_ReadAhead->Has(index) || index >= m_NumSegments || !m_Sectors.HasStream(index)) return;
  if (index < static_cast<int>(m_Segments.size())) {
    rfm_EncodedSegment const* segment = m_Segments[static_cast<std::size_t>(index)].get();
    if (segment && (segment->IsLoaded() || segment->IsArmed())) return;
  }
  m_ReadAhead->Drop();
  rfm_SegmentBuffer encoded;
  try {
    rfm_EncodedSegment::ReadStream(m_Sectors, index, m_SegmentSize, &encoded);
  } catch (std::exception const&) {
    // A damaged stream is left for the reader to find and report.
    return;
  }
  m_ReadAhead->Start(index, encoded, m_SegmentSize);
}

void rfm_EncodedSegmentTable::Trim(int index) {
  ZQA_ASSERT(kSourcePath, index < m_NumSegments);
  ZQA_ASSERT(kSourcePath, index >= 0);
  // A dropped segment's cache entry must not call it back; its stream stays
  // in the file and is reused if the segment comes back.
  for (std::size_t dropped = static_cast<std::size_t>(index); dropped < m_Segments.size(); ++dropped) {
    if (!m_Segments[dropped]) continue;
    ZQA_ASSERT(kSourcePath, !m_Segments[dropped]->IsArmed());
    m_Cache.Forget(static_cast<int>(dropped));
  }
  if (static_cast<int>(m_Segments.size()) > index) m_Segments.resize(static_cast<std::size_t>(index));
  m_NumSegments = index;
  m_LastSegmentSize = m_SegmentSize;
}

void rfm_EncodedSegmentTable::Flush() {
  for (auto& segment : m_Segments) {
    if (segment) segment->Flush();
  }
  WriteHeader();
  m_Sectors.Flush();
}

bool rfm_EncodedSegmentTable::HoldsData(int index) const {
  if (m_Sectors.HasStream(index)) return true;
  return index >= 0 && index < static_cast<int>(m_Segments.size()) && m_Segments[static_cast<std::size_t>(index)] &&
         m_Segments[static_cast<std::size_t>(index)]->IsDirty();
}

std::int64_t rfm_EncodedSegmentTable::StoredSize() {
  // Streams exist only below the stream table's count, which the file's
  // sectors bound, so a damaged segment count costs no long search.
  int last = std::min(m_NumSegments, m_Sectors.NumStreams()) - 1;
  while (last >= 0 && !m_Sectors.HasStream(last)) --last;
  for (int index = static_cast<int>(m_Segments.size()) - 1; index > last; --index) {
    if (HoldsData(index)) last = index;
  }
  return std::min(FileSize(), std::int64_t(last + 1) * m_SegmentSize);
}

std::int64_t rfm_EncodedSegmentTable::FileSize() {
  UpdateLastSegmentSize();
  return std::int64_t(m_SegmentSize) * (m_NumSegments - 1) + m_LastSegmentSize;
}
