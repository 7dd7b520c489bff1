#include "rfm_CodecZip.h"

#include "ZQABasAssert.h"
#include "rfm_SegmentBuffer.h"
#include "zip_Zip.h"

#include <cstring>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_CodecZip";

unsigned char* Bytes(char* data) { return reinterpret_cast<unsigned char*>(data); }
unsigned char const* Bytes(char const* data) { return reinterpret_cast<unsigned char const*>(data); }
}  // namespace

void rfm_CodecZip::Encode(rfm_SegmentBuffer* out, rfm_SegmentBuffer const& in, int length) {
  ZQA_ASSERT(kSourcePath, length >= 0 && length <= in.Size());
  // zlib's output can exceed its input by a little: a tenth and 12 bytes is
  // more than its worst case.
  rfm_SegmentBuffer encoded(static_cast<int>(length * 1.1 + 12.0));
  unsigned long encodedLength = static_cast<unsigned long>(encoded.Size());
  int result = zip_compress2(Bytes(encoded.Data()), &encodedLength, Bytes(in.Data()),
                             static_cast<unsigned long>(length), m_Level);
  ZQA_ASSERT(kSourcePath, result == 0 && "zip_compress2");
  encoded.Trim(static_cast<int>(encodedLength));
  out->Swap(encoded);
}

bool rfm_CodecZip::Decode(rfm_SegmentBuffer* out, rfm_SegmentBuffer const& in) {
  unsigned long decodedLength = static_cast<unsigned long>(out->Size());
  int result = zip_uncompress(Bytes(out->Data()), &decodedLength, Bytes(in.Data()),
                              static_cast<unsigned long>(in.Size()));
  if (result != 0) return false;
  auto const size = static_cast<unsigned long>(out->Size());
  if (decodedLength < size) std::memset(out->Data() + decodedLength, 0, size - decodedLength);
  return true;
}
