#include "rfm_SpaceReprFile.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_Block0.h"
#include "rfm_DatabaseReprFile.h"
#include "rfm_Exc.h"
#include "rfm_LinkageRules.h"

#include <algorithm>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_SpaceReprFile";

// A linkage location below block 0's end is no extent: it holds the slot for
// a space that has not grown yet.
constexpr utl_FileOffset kPlaceholderLocation = 1;

[[noreturn]] void Raise(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

utl_FileOffset RoundUp(utl_FileOffset value, int quantum) { return (value + quantum - 1) / quantum * quantum; }

}  // namespace

rfm_SpaceReprFile::rfm_SpaceReprFile(rfm_DatabaseReprFile& database, int quantum)
    : m_Database(&database), m_Quantum(std::max(quantum, kSmallestQuantum)),
      m_FlushCountSeen(database.GetFlushCount()) {
  m_Head = m_Current = database.CreateLinkage();
  database.Linkage(m_Head).m_Location = kPlaceholderLocation;
}

rfm_SpaceReprFile::rfm_SpaceReprFile(rfm_DatabaseReprFile& database, rfm_Handle const& handle, int quantum)
    : m_Database(&database), m_Head(handle), m_Quantum(std::max(quantum, kSmallestQuantum)), m_Current(handle),
      m_FlushCountSeen(database.GetFlushCount()) {
  // A linkage that continues another object's chain heads no object.
  if (!database.HandleOk(handle) || database.Linkage(handle).m_Continues) {
    Raise(__LINE__, "***ERROR: Database is not valid. This may indicate that the database has been corrupted.");
  }
  ComputeSize();
}

bool rfm_SpaceReprFile::ReadOnly() const { return m_Database->ReadOnly(); }

rfm_StringManager* rfm_SpaceReprFile::StringManager() const { return m_Database->StringManager(); }

void rfm_SpaceReprFile::ComputeSize() const {
  rfm_ChainSizes sizes;
  int steps = 0;
  for (rfm_Handle link = m_Head; !link.IsNull(); link = m_Database->Linkage(link).m_Next) {
    if (++steps > m_Database->ChainLimit()) m_Database->RaiseCorrupt(__LINE__);
    rfm_Linkage const& extent = m_Database->Linkage(link);
    if (!sizes.Take(extent.m_Allocation, extent.m_Length)) m_Database->RaiseCorrupt(__LINE__);
  }
  m_Length = sizes.Length();
  m_Allocation = sizes.Allocation();
}

utl_FileOffset rfm_SpaceReprFile::Length() const {
  if (m_Database->GetFlushCount() != m_FlushCountSeen) {
    m_FlushCountSeen = m_Database->GetFlushCount();
    ComputeSize();
  }
  return m_Length;
}

utl_FileOffset rfm_SpaceReprFile::Allocation() const {
  Length();
  return m_Allocation;
}

rfm_Handle rfm_SpaceReprFile::LastLinkage() const { return m_Database->ChainEnd(m_Current); }

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
  for (int steps = 0; steps <= m_Database->ChainLimit(); ++steps) {
    rfm_Linkage const& extent = m_Database->Linkage(link);
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

utl_FileOffset rfm_SpaceReprFile::StartOfNewExtent() {
  utl_FileOffset end = m_Database->File().LengthLogical();
  if (m_Quantum < kPageSize) return end;
  // A space that grows in pages starts its extents on a page, so that its
  // transfers cover whole pages of the system's cache. The few bytes
  // skipped belong to no object.
  utl_FileOffset aligned = RoundUp(end, kPageSize);
  if (aligned > end) m_Database->Extend(aligned - end);
  return aligned;
}

void rfm_SpaceReprFile::Extend(utl_FileOffset delta) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  if (delta <= 0) Raise(__LINE__, "rfm_SpaceReprFile::Extend: Invalid file extend increment specified.");
  utl_FileOffset free = Allocation() - m_Location;
  if (delta <= free) return;
  utl_FileOffset need = delta - free;

  rfm_Handle last = LastLinkage();
  rfm_Linkage* extent = &m_Database->Linkage(last);
  if (extent->m_Location >= kRfmBlock0Size &&
      extent->m_Location + extent->m_Allocation < m_Database->File().LengthLogical()) {
    // Another object lies beyond this extent: continue in a new one.
    m_Database->MakeDirty(last);
    rfm_Handle fresh = m_Database->CreateLinkage();
    m_Database->Linkage(last).m_Next = fresh;
    last = fresh;
    extent = &m_Database->Linkage(last);
    extent->m_Continues = true;
  }
  if (extent->m_Location < kRfmBlock0Size) extent->m_Location = StartOfNewExtent();
  m_Database->MakeDirty(last);
  utl_FileOffset grown = RoundUp(extent->m_Allocation + need, m_Quantum);
  utl_FileOffset increase = grown - extent->m_Allocation;
  // The file grows first: when it cannot (a full disk, a size limit), the
  // extent claims no bytes beyond the file's end, where the next extent or
  // group would then be placed over them.
  m_Database->Extend(increase);
  extent = &m_Database->Linkage(last);
  extent->m_Allocation = grown;
  m_Allocation += increase;
}

int rfm_SpaceReprFile::Write(char const* buffer, int count) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  if (buffer == nullptr) Raise(__LINE__, "***ERROR: Invalid data buffer pointer when writing space.");
  if (count <= 0) Raise(__LINE__, "***ERROR: Invalid length when writing space.");
  rfm_FileRepr& file = m_Database->File();
  int done = 0;
  int moves = 0;
  while (done < count) {
    rfm_Linkage* extent = &m_Database->Linkage(m_Current);
    utl_FileOffset room = extent->m_Allocation - m_Offset;
    if (room <= 0) {
      if (extent->m_Next.IsNull()) {
        Extend(count - done);
        extent = &m_Database->Linkage(m_Current);
      }
      if (!extent->m_Next.IsNull() && extent->m_Allocation - m_Offset <= 0) {
        if (++moves > m_Database->ChainLimit()) m_Database->RaiseCorrupt(__LINE__);
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
    if (m_Offset > extent->m_Length) {
      extent->m_Length = m_Offset;
      m_Database->MakeDirty(m_Current);
    }
  }
  if (m_Location > Length()) m_Length = m_Location;
  return done;
}

int rfm_SpaceReprFile::Read(char* buffer, int count) {
  if (buffer == nullptr) Raise(__LINE__, "***ERROR: Invalid data buffer pointer when reading space.");
  if (count <= 0) Raise(__LINE__, "***ERROR: Invalid length when reading space.");
  rfm_FileRepr& file = m_Database->File();
  int done = 0;
  int moves = 0;
  while (done < count) {
    rfm_Linkage const& extent = m_Database->Linkage(m_Current);
    utl_FileOffset available = extent.m_Length - m_Offset;
    if (available <= 0) {
      if (extent.m_Next.IsNull()) break;
      if (++moves > m_Database->ChainLimit()) m_Database->RaiseCorrupt(__LINE__);
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
    if (got < chunk) m_Database->RaiseCorrupt(__LINE__);
  }
  return done;
}

void rfm_SpaceReprFile::Truncate(utl_FileOffset length) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  Seek(0);
  utl_FileOffset remainder = length;
  int steps = 0;
  for (rfm_Handle link = m_Head; !link.IsNull(); link = m_Database->Linkage(link).m_Next) {
    if (++steps > m_Database->ChainLimit()) m_Database->RaiseCorrupt(__LINE__);
    rfm_Linkage& extent = m_Database->Linkage(link);
    if (remainder <= 0) {
      extent.m_Length = 0;
      m_Database->MakeDirty(link);
    } else if (remainder <= extent.m_Length) {
      extent.m_Length = remainder;
      m_Database->MakeDirty(link);
    }
    remainder -= extent.m_Length;
  }
  ComputeSize();
}
