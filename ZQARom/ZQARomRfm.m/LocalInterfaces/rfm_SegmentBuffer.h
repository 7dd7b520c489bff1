#ifndef rfm_SegmentBuffer_h
#define rfm_SegmentBuffer_h

// An owned block of bytes: the decoded bytes of one segment of a compressed
// file, or an encoded stream on its way to or from the file. Buffers change
// hands by Swap, which copies no bytes.
//
// Invariant: m_Data is null when no block is held, and m_Size never exceeds
// the block: Trim lowers the size and keeps the block.
class rfm_SegmentBuffer {
public:
  rfm_SegmentBuffer() = default;
  // A block of size bytes, not cleared.
  explicit rfm_SegmentBuffer(int size);
  rfm_SegmentBuffer(rfm_SegmentBuffer const& other);
  rfm_SegmentBuffer(rfm_SegmentBuffer&& other) noexcept { Swap(other); }
  rfm_SegmentBuffer& operator=(rfm_SegmentBuffer const& other);
  ~rfm_SegmentBuffer();

  void Swap(rfm_SegmentBuffer& other) noexcept;
  void Fill(char value);
  // Lowers the size and keeps the block.
  void Trim(int newSize);

  int Size() const { return m_Size; }
  char* Data() { return m_Data; }
  char const* Data() const { return m_Data; }

private:
  char* m_Data = nullptr;
  int m_Size = 0;
};

#endif
