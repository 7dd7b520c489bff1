#ifndef rfm_ArmedSegment_h
#define rfm_ArmedSegment_h

#include "rfm_EncodedSegment.h"

// A pointer to a segment that keeps it armed while it points there:
// assignment arms the new segment before it disarms the old one, so a
// segment assigned to itself never loses its buffer.
class rfm_ArmedSegment {
public:
  rfm_ArmedSegment() = default;
  ~rfm_ArmedSegment() { Reset(); }
  rfm_ArmedSegment(rfm_ArmedSegment const&) = delete;
  rfm_ArmedSegment& operator=(rfm_ArmedSegment const&) = delete;

  rfm_ArmedSegment& operator=(rfm_EncodedSegment* segment) {
    if (segment) segment->Arm();
    rfm_EncodedSegment* old = m_Segment;
    m_Segment = segment;
    if (old) old->Disarm();
    return *this;
  }
  // Disarms the segment; a failure cannot occur on an armed segment.
  void Reset() noexcept {
    rfm_EncodedSegment* old = m_Segment;
    m_Segment = nullptr;
    if (old) old->Disarm();
  }

  rfm_EncodedSegment* operator->() const { return m_Segment; }
  rfm_EncodedSegment* Get() const { return m_Segment; }
  explicit operator bool() const { return m_Segment != nullptr; }

private:
  rfm_EncodedSegment* m_Segment = nullptr;
};

#endif
