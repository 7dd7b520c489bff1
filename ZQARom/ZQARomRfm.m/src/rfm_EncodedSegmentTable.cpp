#include "rfm_EncodedSegmentTable.h"

#include "ZQABasAssert.h"
#include "rfm_Codec.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"
#include "rfm_ReadAhead.h"

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
  if (access == utl_FileAccessRead && rfm_ReadAhead::IsEnabled()) m_ReadAhead.reset(new rfm_SegmentReadAhead(*m_Codec));
}

rfm_EncodedSegmentTable::~rfm_EncodedSegmentTable() = default;

void rfm_EncodedSegmentTable::ReadHeader() {
  char words[kHeaderWords * kWordSize];
  std::int32_t tmp[kHeaderWords];
  if (m_Sectors.ReadMeta(words, sizeof words) != static_cast<int>(sizeof words)) {
    m_Sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
  }
  for (int word = 0; word < kHeaderWords; ++word) {
    tmp[word] = rfm_IntConverter::Internalize(rfm_FileOrder(), words + word * kWordSize);
  }
  if (tmp[kMagicWord] != MAGIC || tmp[kVersionWord] != CURRENT_VERSION) {
    m_Sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
  }
  m_SegmentSize = tmp[kSegmentSizeWord];
  m_NumSegments = tmp[kNumSegmentsWord];
  m_LastSegmentSize = tmp[kLastSegmentSizeWord];
  if (m_SegmentSize <= 0 || m_SegmentSize > kLargestSegmentSize) {
    m_Sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
  }
  if (m_NumSegments < 0 || m_LastSegmentSize < 0 || m_LastSegmentSize > m_SegmentSize ||
      (m_NumSegments == 0 && m_LastSegmentSize != m_SegmentSize)) {
    m_Sectors.File().RaiseCorrupt(kSourcePath, __LINE__);
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

rfm_EncodedSegment* rfm_EncodedSegmentTable::Existing(int index) const {
  auto found = m_Segments.find(index);
  return found == m_Segments.end() ? nullptr : found->second.get();
}

void rfm_EncodedSegmentTable::UpdateLastSegmentSize() {
  if (rfm_EncodedSegment const* last = m_NumSegments > 0 ? Existing(m_NumSegments - 1) : nullptr) {
    m_LastSegmentSize = last->DecodedLength();
  }
}

rfm_EncodedSegment* rfm_EncodedSegmentTable::GetSegment(int index) {
  ZQA_ASSERT(kSourcePath, index >= 0);
  if (rfm_EncodedSegment* existing = Existing(index)) return existing;
  bool const beyond = index >= m_NumSegments;
  int const length = beyond ? 0 : index == m_NumSegments - 1 ? m_LastSegmentSize : m_SegmentSize;
  std::unique_ptr<rfm_EncodedSegment> made(
      new rfm_EncodedSegment(index, m_Sectors, m_Cache, *m_Codec, length, m_ReadAhead.get()));
  rfm_EncodedSegment* segment = made.get();
  m_Segments.emplace(index, std::move(made));
  if (beyond) {
    // The last segment is no longer last: it counts as full from now on.
    if (rfm_EncodedSegment* last = m_NumSegments > 0 ? Existing(m_NumSegments - 1) : nullptr) {
      last->Extend(m_SegmentSize);
    }
    m_LastSegmentSize = 0;
    m_NumSegments = index + 1;
  }
  return segment;
}

void rfm_EncodedSegmentTable::ReadAhead(int index) {
  if (!m_ReadAhead || m_ReadAhead->Has(index) || index >= m_NumSegments || !m_Sectors.HasStream(index)) return;
  rfm_EncodedSegment const* segment = Existing(index);
  if (segment && (segment->IsLoaded() || segment->IsArmed())) return;
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
  auto const first = m_Segments.lower_bound(index);
  for (auto dropped = first; dropped != m_Segments.end(); ++dropped) {
    ZQA_ASSERT(kSourcePath, !dropped->second->IsArmed());
    m_Cache.Forget(dropped->first);
  }
  m_Segments.erase(first, m_Segments.end());
  m_NumSegments = index;
  m_LastSegmentSize = m_SegmentSize;
}

void rfm_EncodedSegmentTable::Flush() {
  for (auto& segment : m_Segments) segment.second->Flush();
  WriteHeader();
  m_Sectors.Flush();
}

bool rfm_EncodedSegmentTable::HoldsData(int index) const {
  if (m_Sectors.HasStream(index)) return true;
  rfm_EncodedSegment const* segment = Existing(index);
  return segment && segment->IsDirty();
}

std::int64_t rfm_EncodedSegmentTable::StoredSize() {
  // Streams exist only below the stream table's count, which the file's
  // sectors bound, and dirty segments only among those in use: a damaged
  // segment count costs no long search.
  int last = std::min(m_NumSegments, m_Sectors.NumStreams()) - 1;
  while (last >= 0 && !m_Sectors.HasStream(last)) --last;
  for (auto const& segment : m_Segments) {
    if (segment.first > last && segment.second->IsDirty()) last = segment.first;
  }
  return std::min(FileSize(), std::int64_t(last + 1) * m_SegmentSize);
}

std::int64_t rfm_EncodedSegmentTable::FileSize() {
  UpdateLastSegmentSize();
  return std::int64_t(m_SegmentSize) * (m_NumSegments - 1) + m_LastSegmentSize;
}
