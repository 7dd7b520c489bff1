#ifndef rfm_CodecZip_h
#define rfm_CodecZip_h

#include "rfm_Codec.h"

// The zlib codec: each segment is one zlib stream at the codec's level.
class rfm_CodecZip : public rfm_Codec {
public:
  // The level of every codec the library makes.
  static constexpr int kDefaultLevel = 6;

  explicit rfm_CodecZip(int level) : m_Level(level) {}

  void Encode(rfm_SegmentBuffer* out, rfm_SegmentBuffer const& in, int length) override;
  [[nodiscard]] bool Decode(rfm_SegmentBuffer* out, rfm_SegmentBuffer const& in) override;

private:
  int m_Level;
};

#endif
