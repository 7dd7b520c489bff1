#ifndef rfm_SegmentBufferHolder_h
#define rfm_SegmentBufferHolder_h

class rfm_SegmentBuffer;

// What owns the contents of a released cache buffer: before the cache
// gives the buffer to another segment it lets the holder save them.
class rfm_SegmentBufferHolder {
public:
  virtual void DiscardBuffer(int index, rfm_SegmentBuffer* buffer) = 0;

protected:
  ~rfm_SegmentBufferHolder() = default;
};

#endif
