#include "rfm_FileRepr.h"

#include "rfm_OffsetConverter.h"
#include "rfm_ReaderSemaphore.h"

rfm_FileRepr::~rfm_FileRepr() = default;

rfm_FileStatus::RfmFileStatus rfm_FileRepr::FileStatus() { return rfm_FileStatus::kUnchanged; }

cow_String rfm_FileRepr::CheckNZDBCache() { return cow_String(); }

utl_FileOffset rfm_FileRepr::LengthStored() { return rfm_OffsetConverter::kLargest; }

bool rfm_FileRepr::Stores(utl_FileOffset, utl_FileOffset) { return true; }

void rfm_FileRepr::FTPCheckSet(int) {}

void rfm_FileRepr::FTPCheckCheck(int) {}

bool rfm_FileRepr::ReaderSemaphore() {
  // A process never waits for its own transaction.
  if (m_ReaderSemaphoreHeld) return false;
  return FileStatus() == rfm_FileStatus::kInTransaction;
}

void rfm_FileRepr::ReaderSemaphoreSet() {
  if (ReadOnly()) return;
  rfm_ReaderSemaphore::ReaderSemaphoreSet(m_Name);
  m_ReaderSemaphoreHeld = true;
}

void rfm_FileRepr::ReaderSemaphoreClear() {
  if (ReadOnly()) return;
  rfm_ReaderSemaphore::ReaderSemaphoreClear(m_Name);
  m_ReaderSemaphoreHeld = false;
}
