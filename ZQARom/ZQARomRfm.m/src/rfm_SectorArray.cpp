#include "rfm_SectorArray.h"

#include "ZQABasAssert.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SectorArray";

constexpr char const* MAGIC = rfm_SectorArray::kMagic;
constexpr int kMagicSize = sizeof rfm_SectorArray::kMagic - 1;
// The three words after the magic.
enum { HEADER_VERSION, META_SIZE, NUM_STREAMS, kHeaderWords };
constexpr int CURRENT_VERSION = 1;
constexpr int kCellSize = 4;
constexpr unsigned int kStreamTableShift = 10;

}  // namespace

rfm_SectorArray::rfm_SectorArray(cow_String const& name, int metaSize)
    : m_File(name, kSectorSize, utl_FileAccessCreate), m_MetaSize(metaSize), m_Streams(0, kStreamTableShift) {
  ZQA_ASSERT(kSourcePath, metaSize >= 0 && metaSize <= kSectorSize - rfm_Sector::kLinkSize - kHeaderSize);
  m_File.NewSector();
}

rfm_SectorArray::rfm_SectorArray(cow_String const& name, utl_FileAccess access)
    : m_File(name, kSectorSize, access), m_Streams(0, kStreamTableShift) {
  ReadHeader();
  ReadStreams();
}

bool rfm_SectorArray::HasStream(int index) const {
  if (index < 0) return false;
  unsigned int const* cell = m_Streams.GetCell(static_cast<unsigned int>(index));
  return cell && *cell;
}

rfm_SectorRead rfm_SectorArray::GetStreamRead(int index) {
  unsigned int const* cell = index < 0 ? nullptr : m_Streams.GetCell(static_cast<unsigned int>(index));
  ZQA_ASSERT(kSourcePath, cell && *cell);
  return rfm_SectorRead(rfm_Sector(static_cast<int>(*cell), &m_File));
}

rfm_SectorWrite rfm_SectorArray::GetStreamWrite(int index) {
  ZQA_ASSERT(kSourcePath, index >= 0);
  if (!HasStream(index)) {
    int first = m_File.NewSector();
    m_Streams.SetCell(static_cast<unsigned int>(index), static_cast<unsigned int>(first));
    if (index >= m_NumStreams) m_NumStreams = index + 1;
  }
  return rfm_SectorWrite(rfm_Sector(static_cast<int>(*m_Streams.GetCell(static_cast<unsigned int>(index))), &m_File));
}

int rfm_SectorArray::WriteMeta(char const* data, int count) {
  count = std::min(count, m_MetaSize);
  SectorZero().Write(data, count, kHeaderSize);
  return count;
}

int rfm_SectorArray::ReadMeta(char* data, int count) {
  return SectorZero().Read(data, std::min(count, m_MetaSize), kHeaderSize);
}

void rfm_SectorArray::Flush() {
  WriteHeader();
  WriteStreams();
}

void rfm_SectorArray::WriteHeader() {
  rfm_Sector zero = SectorZero();
  zero.Write(MAGIC, kMagicSize, 0);
  std::int32_t const words[kHeaderWords] = {CURRENT_VERSION, m_MetaSize, m_NumStreams};
  char tmp[sizeof words];
  for (int word = 0; word < kHeaderWords; ++word) {
    rfm_IntConverter::Externalize(rfm_FileOrder(), tmp + word * kCellSize, words[word]);
  }
  zero.Write(tmp, sizeof tmp, kMagicSize);
}

void rfm_SectorArray::ReadHeader() {
  // Whatever the file holds is checked before use: a file cut short, another
  // magic or version is damage, reported with the file's name.
  rfm_Sector zero = SectorZero();
  if (m_File.UsedSectors() < 1) m_File.RaiseCorrupt(kSourcePath, __LINE__);
  char magic[kMagicSize];
  char words[kHeaderWords * kCellSize];
  if (zero.Read(magic, sizeof magic, 0) != kMagicSize || std::memcmp(magic, MAGIC, kMagicSize) != 0 ||
      zero.Read(words, sizeof words, kMagicSize) != static_cast<int>(sizeof words)) {
    m_File.RaiseCorrupt(kSourcePath, __LINE__);
  }
  std::int32_t tmp[kHeaderWords];
  for (int word = 0; word < kHeaderWords; ++word) {
    tmp[word] = rfm_IntConverter::Internalize(rfm_FileOrder(), words + word * kCellSize);
  }
  if (tmp[HEADER_VERSION] != CURRENT_VERSION) m_File.RaiseCorrupt(kSourcePath, __LINE__);
  m_MetaSize = tmp[META_SIZE];
  m_NumStreams = tmp[NUM_STREAMS];

  // The table needs sectors of its own: a count they cannot hold is damage,
  // caught before it sizes anything.
  if (m_MetaSize < 0 || m_MetaSize > zero.Size() - kHeaderSize) {
    m_File.RaiseCorrupt(kSourcePath, __LINE__);
  }
  int const firstCells = (zero.Size() - kHeaderSize - m_MetaSize) / kCellSize;
  std::int64_t const room = firstCells + std::int64_t(zero.Size() / kCellSize) * (m_File.UsedSectors() - 1);
  if (m_NumStreams < 0 || m_NumStreams > room) m_File.RaiseCorrupt(kSourcePath, __LINE__);
}

void rfm_SectorArray::WriteStreams() {
  rfm_Sector sector = SectorZero();
  int offset = kHeaderSize + m_MetaSize;
  unsigned int index = 0;
  int remaining = m_NumStreams;
  for (;;) {
    int count = std::min((sector.Size() - offset) / kCellSize, remaining);
    char cells[kSectorSize];
    for (int place = 0; place < count; ++place, ++index) {
      unsigned int const* cell = m_Streams.GetCell(index);
      rfm_IntConverter::Externalize(rfm_FileOrder(), cells + place * kCellSize,
                                    cell ? static_cast<std::int32_t>(*cell) : 0);
    }
    sector.Write(cells, count * kCellSize, offset);
    remaining -= count;
    if (remaining == 0) break;
    sector = sector.Extend();
    offset = 0;
  }
  Trim(sector);
}

void rfm_SectorArray::ReadStreams() {
  rfm_Sector sector = SectorZero();
  int offset = kHeaderSize + m_MetaSize;
  unsigned int index = 0;
  int remaining = m_NumStreams;
  // Every sector belongs to one chain: the table's own and the streams'
  // first sectors are all different.
  std::vector<int> owned;
  while (remaining > 0 && !sector.IsNull()) {
    if (sector.Number() != 0) owned.push_back(sector.Number());
    int count = std::min((sector.Size() - offset) / kCellSize, remaining);
    char cells[kSectorSize];
    if (sector.Read(cells, count * kCellSize, offset) != count * kCellSize) {
      m_File.RaiseCorrupt(kSourcePath, __LINE__);
    }
    for (int place = 0; place < count; ++place, ++index) {
      int first = rfm_IntConverter::Internalize(rfm_FileOrder(), cells + place * kCellSize);
      if (first == 0) continue;
      if (!m_File.IsLinkable(first)) m_File.RaiseCorrupt(kSourcePath, __LINE__);
      owned.push_back(first);
      m_Streams.SetCell(index, static_cast<unsigned int>(first));
    }
    remaining -= count;
    if (remaining == 0) break;
    sector = sector.Next();
    offset = 0;
  }
  // The table's own chain ended before its last entry.
  if (remaining != 0) m_File.RaiseCorrupt(kSourcePath, __LINE__);
  std::sort(owned.begin(), owned.end());
  if (std::adjacent_find(owned.begin(), owned.end()) != owned.end()) m_File.RaiseCorrupt(kSourcePath, __LINE__);
}
