#include "rfm_SectorFile.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_DestructorFlush.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"

#include <algorithm>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SectorFile";

constexpr int kNullSector = -1;

utl_FileOffset SectorStart(int number, int sectorSize) {
  return static_cast<utl_FileOffset>(number) * sectorSize;
}

}  // namespace

rfm_SectorFile::rfm_SectorFile(cow_String const& name, int sectorSize, int access)
    : m_File(name, access, access == utl_FileAccessRead ? utl_FileShareAll : utl_FileShareRead),
      m_SectorSize(sectorSize) {
  m_UsedSectors = m_AllocatedSectors = static_cast<int>(m_File.FileSize() / m_SectorSize);
}

rfm_SectorFile::~rfm_SectorFile() {
  // A failed cut leaves spare sectors at the end, which a later open reads
  // as used sectors no stream links to.
  rfm_FlushInDestructor([this] {
    if (m_UsedSectors != m_AllocatedSectors) m_File.Extend(SectorStart(m_UsedSectors, m_SectorSize));
  });
}

int rfm_SectorFile::NewSector() {
  if (m_UsedSectors == m_AllocatedSectors) {
    m_File.Extend(SectorStart(m_AllocatedSectors + kGrowthSectors, m_SectorSize));
    m_AllocatedSectors += kGrowthSectors;
  }
  // Counted only once its link is written: a write that fails (a full
  // disk) leaves no sector in use that ends its chain nowhere.
  int number = m_UsedSectors;
  char link[4];
  rfm_IntConverter::Externalize(rfm_FileOrder(), link, kNullSector);
  Write(number, m_SectorSize - static_cast<int>(sizeof link), link, sizeof link);
  ++m_UsedSectors;
  return number;
}

int rfm_SectorFile::Read(int number, int offset, char* buffer, int count) {
  if (InRun(number) && offset + count <= m_SectorSize) {
    std::memcpy(buffer, m_Run.data() + std::size_t(number - m_RunFirst) * m_SectorSize + offset,
                static_cast<std::size_t>(count));
    return count;
  }
  m_File.Seek(SectorStart(number, m_SectorSize) + offset);
  return m_File.Read(buffer, count);
}

void rfm_SectorFile::Write(int number, int offset, char const* buffer, int count) {
  m_File.Seek(SectorStart(number, m_SectorSize) + offset);
  m_File.Write(buffer, count);
  if (InRun(number)) {
    std::memcpy(m_Run.data() + std::size_t(number - m_RunFirst) * m_SectorSize + offset, buffer,
                static_cast<std::size_t>(count));
  }
}

void rfm_SectorFile::Prefetch(int number, int sectors) {
  if (InRun(number) && InRun(number + sectors - 1)) return;
  sectors = std::min({sectors, kLargestRun, m_UsedSectors - number});
  m_RunSectors = 0;
  if (sectors < 2) return;
  m_Run.resize(std::size_t(sectors) * m_SectorSize);
  m_File.Seek(SectorStart(number, m_SectorSize));
  m_RunFirst = number;
  m_RunSectors = m_File.Read(m_Run.data(), static_cast<int>(m_Run.size())) / m_SectorSize;
}

void rfm_SectorFile::RaiseCorrupt(char const* sourcePath, int line) const {
  // The design's sentence for a damaged compressed file names no file; the
  // name follows on a line of its own, as in the plain file's corruption
  // message, so that the user learns which file it is.
  nex_ThrowMessage(sourcePath, line,
                   atr_SubstituteFormat("%s\n  %s", atr_translate("***ERROR: ZAE database is corrupt."), Name()));
}
