#include "zdb_CheckBytes.h"

#include "rfm_IO.h"
#include "rfm_IntConverter.h"
#include "rfm_OffsetConverter.h"
#include "zdb_CheckReport.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace {

double StoredDouble(char const* bytes) {
  std::uint64_t bits;
  std::memcpy(&bits, bytes, sizeof bits);
  if (rfm_FileOrder().Swap()) bits = omi_SwapperGuts::Swap64(bits);
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

}  // namespace

zdb_CheckBytes::zdb_CheckBytes(rfm_File const& file, zdb_CheckReport& report)
    : m_File(file), m_Report(report), m_Length(file.Length()), m_Chunk(kChunkSize) {}

bool zdb_CheckBytes::Load(utl_FileOffset index) {
  if (index == m_ChunkIndex) return true;
  if (m_Failed.count(index) != 0) return false;
  utl_FileOffset start = index * kChunkSize;
  int wanted = static_cast<int>(std::min<utl_FileOffset>(kChunkSize, m_Length - start));
  m_ChunkIndex = -1;
  try {
    m_File.Seek(start);
    int got = m_File.Read(m_Chunk.data(), wanted);
    if (got != wanted) {
      throw std::runtime_error("only " + std::to_string(got) + " of " + std::to_string(wanted) +
                               " bytes could be read");
    }
  } catch (std::exception const& e) {
    m_Failed.insert(index);
    m_Report.Problem("bytes " + std::to_string(start) + " to " + std::to_string(start + wanted - 1) +
                     " cannot be read: " + e.what());
    return false;
  }
  m_ChunkIndex = index;
  return true;
}

bool zdb_CheckBytes::Read(utl_FileOffset offset, char* out, std::size_t count) {
  if (offset < 0 || offset > m_Length || static_cast<utl_FileOffset>(count) > m_Length - offset) return false;
  while (count > 0) {
    utl_FileOffset index = offset / kChunkSize;
    if (!Load(index)) return false;
    std::size_t inChunk = static_cast<std::size_t>(offset - index * kChunkSize);
    std::size_t part = std::min(count, static_cast<std::size_t>(kChunkSize) - inChunk);
    std::memcpy(out, m_Chunk.data() + inChunk, part);
    out += part;
    offset += static_cast<utl_FileOffset>(part);
    count -= part;
  }
  return true;
}

void zdb_CheckBytes::ReadAll(utl_FileOffset limit) {
  limit = std::min(limit, m_Length);
  for (utl_FileOffset index = 0; index * kChunkSize < limit; ++index) Load(index);
}

std::int32_t zdb_Word(char const* bytes) { return rfm_IntConverter::Internalize(rfm_FileOrder(), bytes); }

bool zdb_StoredOffset(char const* bytes, utl_FileOffset& value) {
  value = rfm_OffsetConverter::Internalize(rfm_FileOrder(), bytes);
  return value != rfm_OffsetConverter::kInvalid;
}

std::string zdb_StoredDoubleText(char const* bytes) {
  char text[32];
  // All the digits: a value a little off a whole number must not print as one.
  std::snprintf(text, sizeof text, "%.17g", StoredDouble(bytes));
  return text;
}
