#include "zip_Zip.h"

#include <zlib.h>

static_assert(sizeof(uLongf) == sizeof(unsigned long), "zlib's lengths are unsigned long");

#ifdef ZQA_WITH_LIBDEFLATE

#include <libdeflate.h>

#include <cstddef>

namespace {

// zlib's levels: libdeflate's scale goes further, but a caller of zlib's
// contract means these, and Z_DEFAULT_COMPRESSION stands for this one.
constexpr int kLargestLevel = 9;
constexpr int kDefaultLevel = 6;

// One thread's libdeflate state, made on first use and kept until the
// thread ends: making a compressor costs more than compressing a segment.
class Coders {
public:
  Coders() = default;
  Coders(Coders const&) = delete;
  Coders& operator=(Coders const&) = delete;
  ~Coders() {
    for (libdeflate_compressor* compressor : m_Compressors) libdeflate_free_compressor(compressor);
    libdeflate_free_decompressor(m_Decompressor);
  }

  libdeflate_compressor* Compressor(int level) {
    libdeflate_compressor*& compressor = m_Compressors[level];
    if (compressor == nullptr) compressor = libdeflate_alloc_compressor(level);
    return compressor;
  }

  libdeflate_decompressor* Decompressor() {
    if (m_Decompressor == nullptr) m_Decompressor = libdeflate_alloc_decompressor();
    return m_Decompressor;
  }

private:
  libdeflate_compressor* m_Compressors[kLargestLevel + 1] = {};
  libdeflate_decompressor* m_Decompressor = nullptr;
};

thread_local Coders tCoders;

}  // namespace

int zip_compress2(unsigned char* dest, unsigned long* destLen, unsigned char const* source, unsigned long sourceLen,
                  int level) {
  if (level == Z_DEFAULT_COMPRESSION) level = kDefaultLevel;
  if (level < 0 || level > kLargestLevel) return Z_STREAM_ERROR;
  libdeflate_compressor* compressor = tCoders.Compressor(level);
  if (compressor == nullptr) return Z_MEM_ERROR;
  std::size_t written = libdeflate_zlib_compress(compressor, source, sourceLen, dest, *destLen);
  // libdeflate answers 0 when the stream does not fit.
  if (written == 0) return Z_BUF_ERROR;
  *destLen = written;
  return Z_OK;
}

int zip_uncompress(unsigned char* dest, unsigned long* destLen, unsigned char const* source,
                   unsigned long sourceLen) {
  libdeflate_decompressor* decompressor = tCoders.Decompressor();
  if (decompressor == nullptr) return Z_MEM_ERROR;
  // Bytes after the end of the stream are ignored, as zlib's uncompress does.
  std::size_t consumed = 0;
  std::size_t produced = 0;
  switch (libdeflate_zlib_decompress_ex(decompressor, source, sourceLen, dest, *destLen, &consumed, &produced)) {
    case LIBDEFLATE_SUCCESS:
      *destLen = produced;
      return Z_OK;
    case LIBDEFLATE_INSUFFICIENT_SPACE:
      // As zlib: the room is full, and *destLen, the room, says so.
      return Z_BUF_ERROR;
    default:
      return Z_DATA_ERROR;
  }
}

#else

int zip_compress2(unsigned char* dest, unsigned long* destLen, unsigned char const* source, unsigned long sourceLen,
                  int level) {
  return compress2(dest, destLen, source, sourceLen, level);
}

int zip_uncompress(unsigned char* dest, unsigned long* destLen, unsigned char const* source,
                   unsigned long sourceLen) {
  return uncompress(dest, destLen, source, sourceLen);
}

#endif
