#ifndef zip_Zip_h
#define zip_Zip_h

// The library's one door to zlib: whole-buffer compression and expansion
// with the contract of zlib's compress2 and uncompress. Each returns 0 on
// success and a zlib status otherwise (Z_BUF_ERROR when the room is short,
// Z_DATA_ERROR for a damaged stream); *destLen is the room in dest on entry
// and the bytes produced on return. Built with libdeflate, the calls go
// through it: the streams are zlib's, readable by zlib and read from zlib,
// though not the same bytes as zlib would write.
int zip_compress2(unsigned char* dest, unsigned long* destLen, unsigned char const* source, unsigned long sourceLen,
                  int level);
int zip_uncompress(unsigned char* dest, unsigned long* destLen, unsigned char const* source,
                   unsigned long sourceLen);

#endif
