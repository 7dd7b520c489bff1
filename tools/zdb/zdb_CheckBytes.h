#ifndef zdb_CheckBytes_h
#define zdb_CheckBytes_h

#include "rfm_File.h"
#include "utl_FileOffset.h"

#include <set>
#include <string>
#include <vector>

class zdb_CheckReport;

// The bytes of a database as the checker reads them: a plain file's content,
// or the logical bytes of a compressed file. Reads go through one cached
// chunk. A chunk that cannot be read (a compressed segment that does not
// decode, an I/O error) is reported once, with the container's own message,
// and reads as missing from then on.
//
// Invariant: a read never reaches past Length() nor into a failed chunk;
// nothing the file holds can make it raise.
class zdb_CheckBytes {
public:
  static constexpr int kChunkSize = 1 << 16;

  zdb_CheckBytes(rfm_File const& file, zdb_CheckReport& report);

  utl_FileOffset Length() const { return m_Length; }
  // Copies count bytes at offset into out; false when any of them is past
  // the end or cannot be read.
  bool Read(utl_FileOffset offset, char* out, std::size_t count);
  // Reads every chunk below limit once, so that every damaged part there
  // is reported.
  void ReadAll(utl_FileOffset limit);

private:
  // Makes the chunk at index the cached one; false when it cannot be read.
  bool Load(utl_FileOffset index);

  rfm_File m_File;
  zdb_CheckReport& m_Report;
  utl_FileOffset m_Length;
  std::vector<char> m_Chunk;
  utl_FileOffset m_ChunkIndex = -1;
  std::set<utl_FileOffset> m_Failed;
};

// Little-endian words and stored offsets, as the file holds them.
std::int32_t zdb_Word(char const* bytes);
// A stored offset or size, when it is one, read as every reader of the
// format reads it (rfm_OffsetConverter): rounded to the nearest byte, not
// negative, below 2^62.
bool zdb_StoredOffset(char const* bytes, utl_FileOffset& value);
// The double in 8 stored bytes, written for a report with all its digits:
// "nan", "-12.5", "80.000000000000014".
std::string zdb_StoredDoubleText(char const* bytes);

#endif
