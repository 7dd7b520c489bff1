#include "rfm_Sector.h"

#include "ZQABasAssert.h"
#include "rfm_IO.h"
#include "rfm_IntConverter.h"
#include "rfm_SectorFile.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_Sector";
}

int rfm_Sector::Size() const { return m_File->SectorSize() - kLinkSize; }

rfm_Sector rfm_Sector::Next() const {
  if (IsNull()) return *this;
  char link[kLinkSize];
  if (m_File->Read(m_Number, Size(), link, kLinkSize) != kLinkSize) m_File->RaiseCorrupt(kSourcePath, __LINE__);
  int next = rfm_IntConverter::Internalize(rfm_FileOrder(), link);
  if (next != kNull && !m_File->IsLinkable(next)) m_File->RaiseCorrupt(kSourcePath, __LINE__);
  return rfm_Sector(next, m_File);
}

void rfm_Sector::SetNext(int number) const {
  ZQA_ASSERT(kSourcePath, !IsNull());
  char link[kLinkSize];
  rfm_IntConverter::Externalize(rfm_FileOrder(), link, number);
  m_File->Write(m_Number, Size(), link, kLinkSize);
}

rfm_Sector rfm_Sector::Extend() const {
  ZQA_ASSERT(kSourcePath, !IsNull());
  rfm_Sector next = Next();
  if (!next.IsNull()) return next;
  int number = m_File->NewSector();
  SetNext(number);
  return rfm_Sector(number, m_File);
}

void rfm_Sector::Prefetch(int sectors) const {
  if (!IsNull()) m_File->Prefetch(m_Number, sectors);
}

int rfm_Sector::Read(char* buffer, int count, int offset) const {
  ZQA_ASSERT(kSourcePath, !IsNull());
  return m_File->Read(m_Number, offset, buffer, count);
}

void rfm_Sector::Write(char const* buffer, int count, int offset) const {
  ZQA_ASSERT(kSourcePath, !IsNull());
  m_File->Write(m_Number, offset, buffer, count);
}
