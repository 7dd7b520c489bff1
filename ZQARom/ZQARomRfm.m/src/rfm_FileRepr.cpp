#include "rfm_FileRepr.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_FtpRecord.h"
#include "rfm_OffsetConverter.h"
#include "rfm_ReaderSemaphore.h"

#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileRepr";

unsigned char const kFtpNoMarker[4] = {0x00, 0x00, 0x00, 0x00};
// Doubles at or above this cannot be a file length.
constexpr double kLargestLength = 9.0e18;

[[noreturn]] void RaiseCorrupt(int line) {
  nex_ThrowMessage(kSourcePath, line,
                   atr_translate("***ERROR: The Zorbex database file is corrupt. If this file was transferred from "
                                 "another machine using FTP or equivalent, ensure that the file was copied using "
                                 "the binary mode instead of ASCII mode."));
}

}  // namespace

rfm_FileRepr::~rfm_FileRepr() = default;

rfm_FileStatus::RfmFileStatus rfm_FileRepr::FileStatus() { return rfm_FileStatus::kUnchanged; }

cow_String rfm_FileRepr::CheckNZDBCache() { return cow_String(); }

utl_FileOffset rfm_FileRepr::LengthStored() { return rfm_OffsetConverter::kLargest; }

bool rfm_FileRepr::Stores(utl_FileOffset, utl_FileOffset) { return true; }

void rfm_FileRepr::ForgetCached(utl_FileOffset, utl_FileOffset) {}

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

void rfm_FileRepr::WriteTransferRecord(int offset) {
  utl_FileOffset noted = m_Location;
  unsigned char record[kRfmFtpRecordSize] = {};
  double length = static_cast<double>(m_PhysicalFileSize);
  if (SwapBytes()) {
    omi_SwapperGuts::ExternalizeArray(record + kRfmFtpLengthOffset, &length, 1, sizeof length);
  } else {
    std::memcpy(record + kRfmFtpLengthOffset, &length, sizeof length);
  }
  Seek(offset);
  Write(reinterpret_cast<char const*>(record), kRfmFtpRecordSize);
  Seek(noted);
}

void rfm_FileRepr::CheckTransferRecord(int offset) {
  utl_FileOffset noted = m_Location;
  unsigned char record[kRfmFtpRecordSize] = {};
  Seek(offset);
  int got = Read(reinterpret_cast<char*>(record), kRfmFtpRecordSize);
  Seek(noted);
  if (got != kRfmFtpRecordSize) RaiseCorrupt(__LINE__);

  double length;
  if (SwapBytes()) {
    omi_SwapperGuts::InternalizeArray(&length, record + kRfmFtpLengthOffset, 1, sizeof length);
  } else {
    std::memcpy(&length, record + kRfmFtpLengthOffset, sizeof length);
  }
  if (!(length >= 0.0 && length < kLargestLength)) RaiseCorrupt(__LINE__);
  auto recorded = static_cast<utl_FileOffset>(length + 0.5);
  if (recorded != 0) {
    if (recorded != m_PhysicalFileSize) RaiseCorrupt(__LINE__);
    return;
  }
  if (std::memcmp(record, kRfmFtpMarker, 4) != 0 && std::memcmp(record, kFtpNoMarker, 4) != 0) RaiseCorrupt(__LINE__);
}
