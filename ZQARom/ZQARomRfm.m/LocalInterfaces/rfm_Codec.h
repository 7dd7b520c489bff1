#ifndef rfm_Codec_h
#define rfm_Codec_h

#include "mem_Alloc.h"

class rfm_SegmentBuffer;

// Turns a segment's decoded bytes into the stream stored for it, and back.
class rfm_Codec : public mem_AllocationOperators {
public:
  virtual ~rfm_Codec() = default;

  // Replaces *out with the encoded form of in's first length bytes.
  virtual void Encode(rfm_SegmentBuffer* out, rfm_SegmentBuffer const& in, int length) = 0;
  // Decodes all of in into *out, whose size is the most it may produce;
  // the bytes after the decoded ones are cleared. Answers false for a
  // stream that does not decode: the caller, who knows the file, reports it.
  [[nodiscard]] virtual bool Decode(rfm_SegmentBuffer* out, rfm_SegmentBuffer const& in) = 0;
};

#endif
