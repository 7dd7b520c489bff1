#ifndef rfm_IOBuffer_h
#define rfm_IOBuffer_h

#include "rfm_BufferWindow.h"
#include "rfm_IOS.h"

#include <memory>

// A write-behind and read-ahead buffer over another object, serving one
// direction at a time. Everything goes through PrepRead and PrepWrite,
// which grant a chunk of whole elements of a size (the quantum) in the
// buffer; typed arrays are swapped straight between the buffer and the
// caller's memory. Transfers of a buffer's size or more go around it: bytes
// and typed reads always, typed writes when the host's byte order is the
// file's (a swapped write needs the buffer, since the caller's array is const).
//
// Invariants:
// - The buffer's first byte stands for the underlying location m_Start.
// - The window (cursor, limit and mode) keeps its own, see rfm_BufferWindow.
// - Nothing waits to be written outside write mode.
class rfm_IOBuffer : public rfm_IOS, private rfm_BufferWindow {
public:
  static constexpr int kDefaultSize = 2048;
  static constexpr int kLargestTransfer = 128 * 1024;

  // underlying must outlive the buffer. size 0 means kDefaultSize.
  rfm_IOBuffer(rfm_IOS* underlying, int size);
  // Writes what waits; a failure then can only be reported on standard error.
  ~rfm_IOBuffer() override;
  rfm_IOBuffer(rfm_IOBuffer const&) = delete;
  rfm_IOBuffer& operator=(rfm_IOBuffer const&) = delete;

  bool ReadOnly() const override { return m_Underlying->ReadOnly(); }
  // Counts bytes not yet written.
  utl_FileOffset Length() const override;
  void Seek(utl_FileOffset offset) override;
  utl_FileOffset Location() const override { return m_Mode == kIdle ? m_Start : m_Start + m_Cursor; }
  void Flush() override;
  void Extend(utl_FileOffset delta) override;
  int Read(char* buffer, int count) override { return ReadBytes(buffer, count); }
  int Write(char const* buffer, int count) override { return WriteBytes(buffer, count); }
  // Read and Write without the virtual call: the common small transfer that
  // the buffer already holds, or has room for, is a copy; the rest goes out
  // of line.
  int ReadBytes(char* buffer, int count) {
    if (!Fits(kReading, buffer, count)) return ReadThrough(buffer, count);
    CopyOut(buffer, count);
    return count;
  }
  int WriteBytes(char const* buffer, int count) {
    if (!Fits(kWriting, buffer, count)) return WriteThrough(buffer, count);
    CopyIn(buffer, count);
    return count;
  }
  // For the handles in front of the buffer, whose small transfers the
  // window serves inline; the transfers it cannot serve come back to
  // ReadBytes and WriteBytes.
  rfm_BufferWindow& Window() { return *this; }
  int ReadIntArray(int* values, int count) override;
  int ReadFloatArray(float* values, int count) override;
  int ReadDoubleArray(double* values, int count) override;
  void WriteIntArray(int const* values, int count) override;
  void WriteFloatArray(float const* values, int count) override;
  void WriteDoubleArray(double const* values, int count) override;
  rfm_StringManager* StringManager() const override { return m_Underlying->StringManager(); }
  int ReadStringArray(cow_String* strings, int count) override;
  void WriteStringArray(cow_String const* strings, int count) override;

  // Grants up to count elements of quantum bytes at Chunk(); false when none
  // is left to read.
  bool PrepRead(int quantum, int count);
  // Grants room for up to count elements of quantum bytes at Chunk().
  bool PrepWrite(int quantum, int count);
  char* Chunk() const { return m_Chunk; }
  int ChunkCount() const { return m_ChunkCount; }

  // Copies all the rest of source to this buffer.
  void Append(rfm_IOBuffer& source);
  // Ends the current direction: writes what waits, forgets what was read ahead.
  void LocalFlush();
  // The size asked for, the least transfer.
  int Size() const { return m_Size; }
  // The size of the next fill or write-back in the current run.
  int TransferSize() const { return m_Transfer; }

private:
  // The size for a transfer from m_Start, with room for it: doubled when it
  // continues the last transfer's run, the size asked for when not.
  int NextTransfer();
  // Notes that bytes [start, end) of the underlying object just moved.
  void RecordRun(utl_FileOffset start, utl_FileOffset end) {
    m_RunStart = start;
    m_RunEnd = end;
  }
  int ReadThrough(char* buffer, int count);
  int WriteThrough(char const* buffer, int count);
  void BufferBeginRead();
  void BufferEndRead();
  void BufferBeginWrite();
  void BufferEndWrite();
  template <class T>
  int ReadTyped(T* values, int count);
  template <class T>
  void WriteTyped(T const* values, int count, char const* failure);

  rfm_IOS* m_Underlying;
  int m_Size;
  int m_Transfer;
  int m_Capacity;
  utl_FileOffset m_Start;
  // The last transfer's underlying bytes; a transfer from above its start
  // up to its end continues it (a fill may start a little before the end,
  // re-reading a partial element).
  utl_FileOffset m_RunStart = -1;
  utl_FileOffset m_RunEnd = -1;
  std::unique_ptr<char[]> m_Buffer;
  char* m_Chunk = nullptr;
  int m_ChunkCount = 0;
};

#endif
