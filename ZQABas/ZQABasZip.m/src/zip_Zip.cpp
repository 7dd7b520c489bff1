#include "zip_Zip.h"

#include <zlib.h>

static_assert(sizeof(uLongf) == sizeof(unsigned long), "zlib's lengths are unsigned long");

int zip_compress2(unsigned char* dest, unsigned long* destLen, unsigned char const* source, unsigned long sourceLen,
                  int level) {
  return compress2(dest, destLen, source, sourceLen, level);
}

int zip_uncompress(unsigned char* dest, unsigned long* destLen, unsigned char const* source,
                   unsigned long sourceLen) {
  return uncompress(dest, destLen, source, sourceLen);
}
