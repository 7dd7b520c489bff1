#include "rfm_SpaceReprFile.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_Block0.h"
#include "rfm_FileRepr.h"
#include "rfm_LinkageGroups.h"
#include "rfm_Exc.h"
#include "rfm_LinkageRules.h"

#include <algorithm>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SpaceReprFile";

[[noreturn]] void Raise(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

}  // namespace

rfm_SpaceReprFile::rfm_SpaceReprFile(rfm_LinkageGroups& linkages, rfm_StringManager* strings, int quantum)
    : m_Linkages(&linkages), m_Strings(strings), m_Quantum(std::max(quantum, kSmallestQuantum)),
      m_GenerationSeen(linkages.Generation()) {
  m_Head = m_Current = linkages.NewObject();
}

rfm_SpaceReprFile::rfm_SpaceReprFile(rfm_LinkageGroups& linkages, rfm_StringManager* strings,
                                     rfm_Handle const& handle, int quantum)
    : m_Linkages(&linkages), m_Strings(strings), m_Head(handle), m_Quantum(std::max(quantum, kSmallestQuantum)),
      m_Current(handle), m_GenerationSeen(linkages.Generation()) {
  // A linkage that continues another object's chain heads no object.
  if (!linkages.HandleOk(handle) || linkages.Linkage(handle).m_Continues) {
    Raise(__LINE__, "***ERROR: Database is not valid. This may indicate that the database has been corrupted.");
  }
  ComputeSize();
}

bool rfm_SpaceReprFile::ReadOnly() const { return m_Linkages->File().ReadOnly(); }

rfm_StringManager* rfm_SpaceReprFile::StringManager() const { return m_Strings; }

void rfm_SpaceReprFile::ComputeSize() const {
  rfm_ChainSizes sizes;
  int steps = 0;
  for (rfm_Handle link = m_Head; !link.IsNull(); link = m_Linkages->Linkage(link).m_Next) {
    if (++steps > m_Linkages->ChainLimit()) m_Linkages->RaiseCorrupt(__LINE__);
    rfm_Linkage const& extent = m_Linkages->Linkage(link);
    if (!sizes.Take(extent.m_Allocation, extent.m_Length)) m_Linkages->RaiseCorrupt(__LINE__);
  }
  m_Length = sizes.Length();
  m_Allocation = sizes.Allocation();
}

utl_FileOffset rfm_SpaceReprFile::Length() const {
  if (m_Linkages->Generation() != m_GenerationSeen) {
    m_GenerationSeen = m_Linkages->Generation();
    ComputeSize();
  }
  return m_Length;
}

utl_FileOffset rfm_SpaceReprFile::Allocation() const {
  Length();
  return m_Allocation;
}

rfm_Handle rfm_SpaceReprFile::LastLinkage() const { return m_Linkages->ChainEnd(m_Current); }

void rfm_SpaceReprFile::RaiseBadSeek(int line, utl_FileOffset offset) const {
  nex_ThrowMessage(kSourcePath, line,
                   atr_SubstituteFormat(atr_translate("***ERROR: Invalid seek offset: %f.  This is usually caused by "
                                                      "depletion of free space on the filesystem on which the ZDB "
                                                      "file is being built."),
                                        static_cast<double>(offset)));
}

void rfm_SpaceReprFile::Seek(utl_FileOffset offset) {
  if (offset == m_Location) return;
  if (offset < 0) RaiseBadSeek(__LINE__, offset);
  utl_FileOffset remainder = offset;
  rfm_Handle link = m_Head;
  for (int steps = 0; steps <= m_Linkages->ChainLimit(); ++steps) {
    rfm_Linkage const& extent = m_Linkages->Linkage(link);
    // A seek to an extent's exact end stays in that extent.
    if (remainder <= extent.m_Length) {
      m_Current = link;
      m_Offset = remainder;
      m_Location = offset;
      return;
    }
    remainder -= extent.m_Length;
    link = extent.m_Next;
    if (link.IsNull()) break;
  }
  RaiseBadSeek(__LINE__, offset);
}

void rfm_SpaceReprFile::Extend(utl_FileOffset delta) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  if (delta <= 0) Raise(__LINE__, "rfm_SpaceReprFile::Extend: Invalid file extend increment specified.");
  utl_FileOffset free = Allocation() - m_Location;
  if (delta <= free) return;
  m_Allocation += m_Linkages->Grow(LastLinkage(), delta - free, m_Quantum);
}

int rfm_SpaceReprFile::Write(char const* buffer, int count) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  if (buffer == nullptr) Raise(__LINE__, "***ERROR: Invalid data buffer pointer when writing space.");
  if (count <= 0) Raise(__LINE__, "***ERROR: Invalid length when writing space.");
  rfm_FileRepr& file = m_Linkages->File();
  int done = 0;
  int moves = 0;
  while (done < count) {
    rfm_Linkage const* extent = &m_Linkages->Linkage(m_Current);
    utl_FileOffset room = extent->m_Allocation - m_Offset;
    if (room <= 0) {
      if (extent->m_Next.IsNull()) {
        Extend(count - done);
        extent = &m_Linkages->Linkage(m_Current);
      }
      if (!extent->m_Next.IsNull() && extent->m_Allocation - m_Offset <= 0) {
        if (++moves > m_Linkages->ChainLimit()) m_Linkages->RaiseCorrupt(__LINE__);
        m_Current = extent->m_Next;
        m_Offset = 0;
        continue;
      }
      room = extent->m_Allocation - m_Offset;
    }
    int chunk = static_cast<int>(std::min<utl_FileOffset>(room, count - done));
    file.Seek(extent->m_Location + m_Offset);
    if (file.Write(buffer + done, chunk) != chunk) RaiseWriteFailed();
    done += chunk;
    m_Offset += chunk;
    m_Location += chunk;
    if (m_Offset > extent->m_Length) m_Linkages->RecordLength(m_Current, m_Offset);
  }
  if (m_Location > Length()) m_Length = m_Location;
  return done;
}

int rfm_SpaceReprFile::Read(char* buffer, int count) {
  if (buffer == nullptr) Raise(__LINE__, "***ERROR: Invalid data buffer pointer when reading space.");
  if (count <= 0) Raise(__LINE__, "***ERROR: Invalid length when reading space.");
  rfm_FileRepr& file = m_Linkages->File();
  int done = 0;
  int moves = 0;
  while (done < count) {
    rfm_Linkage const& extent = m_Linkages->Linkage(m_Current);
    utl_FileOffset available = extent.m_Length - m_Offset;
    if (available <= 0) {
      if (extent.m_Next.IsNull()) break;
      if (++moves > m_Linkages->ChainLimit()) m_Linkages->RaiseCorrupt(__LINE__);
      m_Current = extent.m_Next;
      m_Offset = 0;
      continue;
    }
    int chunk = static_cast<int>(std::min<utl_FileOffset>(available, count - done));
    file.Seek(extent.m_Location + m_Offset);
    int got = file.Read(buffer + done, chunk);
    done += got;
    m_Offset += got;
    m_Location += got;
    // The linkage promises bytes the file does not have.
    if (got < chunk) m_Linkages->RaiseCorrupt(__LINE__);
  }
  return done;
}

void rfm_SpaceReprFile::Truncate(utl_FileOffset length) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  Seek(0);
  utl_FileOffset remainder = length;
  int steps = 0;
  for (rfm_Handle link = m_Head; !link.IsNull(); link = m_Linkages->Linkage(link).m_Next) {
    if (++steps > m_Linkages->ChainLimit()) m_Linkages->RaiseCorrupt(__LINE__);
    rfm_Linkage const& extent = m_Linkages->Linkage(link);
    if (remainder <= 0) {
      m_Linkages->RecordLength(link, 0);
    } else if (remainder <= extent.m_Length) {
      m_Linkages->RecordLength(link, remainder);
    }
    remainder -= extent.m_Length;
  }
  ComputeSize();
}
