#ifndef rfmT_PageDigest_h
#define rfmT_PageDigest_h

#include <cstdint>

// A 64-bit digest of a page's bytes, by which the file assistant tells
// whether a page changed since it sent it. Each 8-byte word goes through a
// step that is one-to-one in the word and in the running value, so two
// pages of the same length that differ in a single word never share a
// digest; pages that differ more collide with a chance of about 2^-64. Not
// meant to withstand anyone choosing bytes to collide.
std::uint64_t rfmT_PageDigest(char const* bytes, int length);

#endif
