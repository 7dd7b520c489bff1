#include "zdb_CheckBlock0.h"

#include "rfm_Block0.h"
#include "rfm_FtpRecord.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckReport.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

char const kSubject[] = "block 0: ";

void CheckTransferRecord(char const* block0, zdb_CheckBytes& bytes, zdb_CheckReport& report) {
  char const* record = block0 + kRfmFtpRecordOffset;
  utl_FileOffset recorded = 0;
  if (!zdb_StoredOffset(record + kRfmFtpLengthOffset, recorded)) {
    report.Problem(std::string(kSubject) + "the transfer check record holds no valid length (" +
                   zdb_StoredDoubleText(record + kRfmFtpLengthOffset) + ")");
    return;
  }
  if (recorded != 0) {
    if (recorded != bytes.Length()) {
      report.Problem(std::string(kSubject) + "the transfer check record gives the file " + std::to_string(recorded) +
                     " bytes, it has " + std::to_string(bytes.Length()));
    }
    return;
  }
  static char const kZeros[4] = {};
  if (std::memcmp(record, kZeros, 4) != 0 && std::memcmp(record, kRfmFtpMarker, 4) != 0) {
    char marker[32];
    std::snprintf(marker, sizeof marker, "%02X %02X %02X %02X", static_cast<unsigned char>(record[0]),
                  static_cast<unsigned char>(record[1]), static_cast<unsigned char>(record[2]),
                  static_cast<unsigned char>(record[3]));
    report.Problem(std::string(kSubject) + "the transfer check marker is " + marker +
                   ", neither zeros nor 0A 00 0D 0A");
  }
}

}  // namespace

bool zdb_CheckBlock0(zdb_CheckBytes& bytes, bool compressed, zdb_CheckReport& report) {
  char block0[kRfmBlock0Size];
  if (bytes.Length() < kRfmBlock0Size) {
    report.Problem(std::string(kSubject) + "the file has " + std::to_string(bytes.Length()) +
                   " bytes, fewer than block 0's " + std::to_string(kRfmBlock0Size));
    return false;
  }
  if (!bytes.Read(0, block0, sizeof block0)) return false;
  if (std::strncmp(block0, kRfmOldFormatMagic, std::strlen(kRfmOldFormatMagic)) == 0) {
    report.Problem(std::string(kSubject) + "an old format database (magic \"" + kRfmOldFormatMagic +
                   "\"), which cannot be read");
    return false;
  }
  if (std::strncmp(block0, kRfmDatabaseMagic, std::strlen(kRfmDatabaseMagic)) != 0) {
    report.Problem(std::string(kSubject) + "the magic is not \"" + kRfmDatabaseMagic + "\": this is no database");
    return false;
  }
  int version = zdb_Word(block0 + kRfmVersionOffset);
  if (version < kRfmOldestReadableVersion) {
    report.Problem(std::string(kSubject) + "version " + std::to_string(version) +
                   " is older than the oldest readable, " + std::to_string(kRfmOldestReadableVersion));
  }
  // A compressed file keeps no transfer check record: its readers never look at it.
  if (!compressed) CheckTransferRecord(block0, bytes, report);
  return true;
}
