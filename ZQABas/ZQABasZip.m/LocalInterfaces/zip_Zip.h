#ifndef zip_Zip_h
#define zip_Zip_h

// The library's one door to zlib: whole-buffer compression and expansion
// with the contract of zlib's compress2 and uncompress. Each returns 0 on
// success and a zlib status otherwise; *destLen is the room in dest on
// entry and the bytes produced on return.
int zip_compress2(unsigned char* dest, unsigned long* destLen, unsigned char const* source, unsigned long sourceLen,
                  int level);
int zip_uncompress(unsigned char* dest, unsigned long* destLen, unsigned char const* source,
                   unsigned long sourceLen);

#endif
