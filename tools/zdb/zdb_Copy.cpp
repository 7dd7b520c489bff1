// zdb compress and zdb decompress: a database copied between the plain and
// the compressed container, byte for byte of its logical content up to the
// database's end, then read back and compared.

#include "ZQABasException.h"
#include "ZQABasUtlFilePath.h"
#include "rfm_Block0.h"
#include "rfm_Database.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_File.h"
#include "rfm_FileRepr.h"
#include "rfm_FtpRecord.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_Failure.h"
#include "zdb_Progress.h"

#include <sys/stat.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr int kBlockSize = 1 << 20;

// The file's size on disk; for a file that stat cannot see (a URL), the
// size its representation tells.
long long SizeOnDisk(std::string const& name, utl_FileOffset told) {
  struct stat status;
  return ::stat(name.c_str(), &status) == 0 ? static_cast<long long>(status.st_size) : static_cast<long long>(told);
}

// Reads exactly count bytes at offset.
void ReadBlock(rfm_File const& file, utl_FileOffset offset, char* buffer, int count, std::string const& name) {
  file->Seek(offset);
  if (file->Read(buffer, count) != count) {
    throw zdb_Failure(name + ": only part of the bytes at offset " + std::to_string(offset) + " could be read");
  }
}

// Blanks the transfer check record in a block that holds it, so that copies
// of both kinds compare equal.
void BlankRecord(utl_FileOffset offset, char* block, int count) {
  utl_FileOffset start = std::max<utl_FileOffset>(offset, kRfmFtpRecordOffset);
  utl_FileOffset end = std::min<utl_FileOffset>(offset + count, kRfmFtpRecordOffset + kRfmFtpRecordSize);
  if (start < end) std::memset(block + (start - offset), 0, static_cast<std::size_t>(end - start));
}

// Copies the first total bytes of in.
void CopyBytes(rfm_File const& in, rfm_File const& out, utl_FileOffset total, std::string const& inName) {
  zdb_Progress progress(total);
  std::vector<char> block(kBlockSize);
  for (utl_FileOffset done = 0; done < total;) {
    int count = static_cast<int>(std::min<utl_FileOffset>(kBlockSize, total - done));
    ReadBlock(in, done, block.data(), count, inName);
    out->Seek(done);
    if (out->Write(block.data(), count) != count) throw std::runtime_error("a write fell short");
    done += count;
    progress.Update(done);
  }
  progress.Finish();
}

void Verify(std::string const& inName, std::string const& outName, utl_FileOffset total) {
  rfm_File in = rfm_File::Open(inName.c_str(), utl_FileAccessRead, false);
  rfm_File out = rfm_File::Open(outName.c_str(), utl_FileAccessRead, false);
  if (out->Length() != total) {
    throw zdb_Failure(outName + ": the copy has " + std::to_string(out->Length()) + " bytes, not " +
                      std::to_string(total));
  }
  std::vector<char> expected(kBlockSize);
  std::vector<char> copied(kBlockSize);
  for (utl_FileOffset done = 0; done < total;) {
    int count = static_cast<int>(std::min<utl_FileOffset>(kBlockSize, total - done));
    ReadBlock(in, done, expected.data(), count, inName);
    ReadBlock(out, done, copied.data(), count, outName);
    BlankRecord(done, expected.data(), count);
    BlankRecord(done, copied.data(), count);
    if (std::memcmp(expected.data(), copied.data(), static_cast<std::size_t>(count)) != 0) {
      throw zdb_Failure(outName + ": the copy differs from " + inName + " in the bytes from offset " +
                        std::to_string(done));
    }
    done += count;
  }
  rfm_Database::Open(out, cow_String());
}

int Copy(std::vector<std::string> const& words, bool compress) {
  zdb_Arguments arguments(words, {}, 2);
  std::string const& inName = arguments.Positional(0);
  std::string const& outName = arguments.Positional(1);
  // Only a database is copied: one that does not open is not worth a copy.
  zdb_Database const database(inName);
  rfm_File const& in = database.File();
  if (database.Compressed() == compress) {
    throw zdb_Failure(inName + (compress ? ": is compressed already" : ": is not compressed"));
  }
  if (ZQABasUtlFilePath(outName.c_str(), cow_String()).Exists()) {
    throw zdb_Failure(outName + ": exists already; zdb does not overwrite a file");
  }
  try {
    rfm_File out = compress ? rfm_File::CreateCompressed(outName.c_str())
                            : rfm_File::Open(outName.c_str(), utl_FileAccessCreate, false);
    // The database, not what the container claims: bytes past its end
    // belong to no one, and a damaged count could claim any number.
    utl_FileOffset const total = std::min(in->Length(), database.Database().Repr().LogicalEnd());
    CopyBytes(in, out, total, inName);
    if (compress) {
      char const zeros[kRfmFtpRecordSize] = {};
      out->Seek(kRfmFtpRecordOffset);
      out->Write(zeros, kRfmFtpRecordSize);
    } else {
      out->FTPCheckSet(kRfmFtpRecordOffset);
    }
    out->Flush();
    out = rfm_File();
    Verify(inName, outName, total);
    long long inSize = SizeOnDisk(inName, in->LengthPysical());
    long long outSize = SizeOnDisk(outName, total);
    std::printf("%s %s (%lld bytes) to %s (%lld bytes, %.1f%%), verified\n", compress ? "compressed" : "decompressed",
                inName.c_str(), inSize, outName.c_str(), outSize,
                inSize > 0 ? 100.0 * static_cast<double>(outSize) / static_cast<double>(inSize) : 100.0);
    return kZdbSuccess;
  } catch (zdb_Failure const& e) {
    // A copy that failed is no copy: it goes, so that nobody takes it for one.
    std::remove(outName.c_str());
    throw zdb_Failure(std::string(e.what()) + "; the copy was removed");
  } catch (ZQABasException const& e) {
    // The library's messages name their file already.
    std::remove(outName.c_str());
    throw zdb_Failure(std::string(e.what()) + "; the copy was removed");
  } catch (std::exception const& e) {
    std::remove(outName.c_str());
    throw zdb_Failure(outName + ": " + e.what() + "; the copy was removed");
  }
}

int Compress(std::vector<std::string> const& words) { return Copy(words, true); }
int Decompress(std::vector<std::string> const& words) { return Copy(words, false); }

}  // namespace

zdb_Command const zdb_CompressCommand = {
    "compress",
    "copies a plain database into a new compressed file, and verifies it",
    "usage: zdb compress IN OUT\n"
    "\n"
    "Copies the plain database IN into the new compressed file OUT, then\n"
    "reads OUT back and compares it with IN. OUT must not exist. While it\n"
    "copies, a progress bar shows on standard error when that is a terminal.\n"
    "A compressed file keeps no transfer check record: its bytes there are\n"
    "zero. Copy a database that no writer is changing.\n",
    Compress,
};

zdb_Command const zdb_DecompressCommand = {
    "decompress",
    "copies a compressed database into a new plain file, and verifies it",
    "usage: zdb decompress IN OUT\n"
    "\n"
    "Copies the compressed database IN into the new plain file OUT, then reads\n"
    "OUT back and compares it with IN. OUT must not exist. While it copies, a\n"
    "progress bar shows on standard error when that is a terminal. The plain\n"
    "copy gets a transfer check record with its own length.\n",
    Decompress,
};
