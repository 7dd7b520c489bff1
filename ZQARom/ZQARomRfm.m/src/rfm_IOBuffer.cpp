#include "rfm_IOBuffer.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_DestructorFlush.h"
#include "rfm_Exc.h"
#include "rfm_FileException.h"
#include "rfm_StringManager.h"

#include <algorithm>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_IOBuffer";

[[noreturn]] void Raise(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

}  // namespace

rfm_IOBuffer::rfm_IOBuffer(rfm_IOS* underlying, int size)
    : m_Underlying(underlying), m_Size(size > 0 ? size : kDefaultSize), m_Transfer(m_Size), m_Capacity(m_Size),
      m_Start(underlying->Location()), m_Buffer(new char[static_cast<std::size_t>(m_Size)]) {
  m_Bytes = m_Buffer.get();
}

rfm_IOBuffer::~rfm_IOBuffer() {
  rfm_FlushInDestructor([this] { LocalFlush(); });
}

int rfm_IOBuffer::NextTransfer() {
  bool const continues = m_RunStart < m_Start && m_Start <= m_RunEnd;
  m_Transfer = continues ? std::min(std::max(m_Transfer, m_Size) * 2, std::max(kLargestTransfer, m_Size)) : m_Size;
  if (m_Transfer > m_Capacity) {
    // Only an empty buffer grows, so nothing is copied; once grown it stays,
    // since a run that stopped often starts again.
    m_Buffer.reset(new char[static_cast<std::size_t>(m_Transfer)]);
    m_Capacity = m_Transfer;
    m_Bytes = m_Buffer.get();
  }
  return m_Transfer;
}

void rfm_IOBuffer::BufferBeginRead() {
  int const transfer = NextTransfer();
  m_Underlying->Seek(m_Start);
  m_Limit = m_Underlying->Read(m_Buffer.get(), transfer);
  m_Cursor = 0;
  RecordRun(m_Start, m_Start + m_Limit);
}

void rfm_IOBuffer::BufferEndRead() {
  m_Start += m_Cursor;
  m_Cursor = 0;
  m_Limit = 0;
}

void rfm_IOBuffer::BufferBeginWrite() {
  m_Cursor = 0;
  m_Limit = NextTransfer();
}

void rfm_IOBuffer::BufferEndWrite() {
  if (m_Cursor > 0) {
    m_Underlying->Seek(m_Start);
    int written = 0;
    while (written < m_Cursor) {
      int n = m_Underlying->Write(m_Buffer.get() + written, m_Cursor - written);
      if (n <= 0) RaiseWriteFailed();
      written += n;
    }
    RecordRun(m_Start, m_Start + written);
    m_Start += written;
  }
  m_Cursor = 0;
  m_Limit = 0;
}

void rfm_IOBuffer::LocalFlush() {
  if (m_Mode == kWriting) {
    BufferEndWrite();
  } else if (m_Mode == kReading) {
    BufferEndRead();
  }
  m_Mode = kIdle;
}

bool rfm_IOBuffer::PrepRead(int quantum, int count) {
  if (m_Mode != kReading) {
    if (m_Mode == kWriting) BufferEndWrite();
    BufferBeginRead();
    m_Mode = kReading;
  }
  if (m_Limit - m_Cursor < quantum) {
    m_Chunk = nullptr;
    m_ChunkCount = 0;
    BufferEndRead();
    BufferBeginRead();
    if (m_Limit - m_Cursor < quantum) return false;
  }
  m_ChunkCount = std::min((m_Limit - m_Cursor) / quantum, count);
  m_Chunk = m_Buffer.get() + m_Cursor;
  m_Cursor += m_ChunkCount * quantum;
  return m_ChunkCount > 0;
}

bool rfm_IOBuffer::PrepWrite(int quantum, int count) {
  if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
  if (quantum > m_Size) Raise(__LINE__, "rfm_IOBuffer::PrepWrite: Quantum is too large for buffer.");
  if (m_Mode != kWriting) {
    if (m_Mode == kReading) BufferEndRead();
    BufferBeginWrite();
    m_Mode = kWriting;
  }
  if (m_Limit - m_Cursor < quantum) {
    m_Chunk = nullptr;
    m_ChunkCount = 0;
    BufferEndWrite();
    BufferBeginWrite();
  }
  m_ChunkCount = std::min((m_Limit - m_Cursor) / quantum, count);
  m_Chunk = m_Buffer.get() + m_Cursor;
  m_Cursor += m_ChunkCount * quantum;
  return m_ChunkCount > 0;
}

utl_FileOffset rfm_IOBuffer::Length() const { return std::max(Location(), m_Underlying->Length()); }

void rfm_IOBuffer::Seek(utl_FileOffset offset) {
  if (Location() == offset) return;
  LocalFlush();
  m_Start = offset;
}

void rfm_IOBuffer::Flush() {
  LocalFlush();
  m_Underlying->Flush();
}

void rfm_IOBuffer::Extend(utl_FileOffset delta) {
  Flush();
  m_Underlying->Seek(m_Start);
  m_Underlying->Extend(delta);
}

int rfm_IOBuffer::ReadThrough(char* buffer, int count) {
  if (buffer == nullptr || count < 0) rfm_FileBadParameterExc("rfm_IOBuffer::Read").Throw(kSourcePath, __LINE__);
  int done = 0;
  while (done < count) {
    int rest = count - done;
    bool buffered = m_Mode == kReading && m_Cursor < m_Limit;
    if (!buffered && rest >= m_Size) {
      // Large reads go straight to the caller's memory.
      LocalFlush();
      m_Underlying->Seek(m_Start);
      int got = m_Underlying->Read(buffer + done, rest);
      RecordRun(m_Start, m_Start + got);
      m_Start += got;
      done += got;
      break;
    }
    if (!PrepRead(1, rest)) break;
    std::memcpy(buffer + done, m_Chunk, static_cast<std::size_t>(m_ChunkCount));
    done += m_ChunkCount;
  }
  return done;
}

int rfm_IOBuffer::WriteThrough(char const* buffer, int count) {
  if (buffer == nullptr || count < 0) rfm_FileBadParameterExc("rfm_IOBuffer::Write").Throw(kSourcePath, __LINE__);
  int done = 0;
  while (done < count) {
    int rest = count - done;
    if (rest >= m_Size && !(m_Mode == kWriting && m_Cursor > 0)) {
      // Large writes go straight from the caller's memory.
      if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
      LocalFlush();
      m_Underlying->Seek(m_Start);
      int written = m_Underlying->Write(buffer + done, rest);
      RecordRun(m_Start, m_Start + written);
      m_Start += written;
      done += written;
      if (written < rest) RaiseWriteFailed();
      break;
    }
    PrepWrite(1, rest);
    std::memcpy(m_Chunk, buffer + done, static_cast<std::size_t>(m_ChunkCount));
    done += m_ChunkCount;
  }
  return done;
}

template <class T>
int rfm_IOBuffer::ReadTyped(T* values, int count) {
  CheckArrayArguments(values, count, sizeof(T));
  int done = 0;
  while (done < count) {
    int rest = count - done;
    if (rest * static_cast<int>(sizeof(T)) >= m_Size) {
      // Large arrays go straight to the caller's memory and are swapped in
      // place there. What the buffer read ahead is dropped and read again.
      LocalFlush();
      m_Underlying->Seek(m_Start);
      int got = m_Underlying->Read(reinterpret_cast<char*>(values + done), rest * static_cast<int>(sizeof(T)));
      int whole = got / static_cast<int>(sizeof(T));
      // A torn last element stays unread, as through the buffer; its bytes
      // may have reached the caller's element past the count returned.
      RecordRun(m_Start, m_Start + static_cast<utl_FileOffset>(whole) * static_cast<int>(sizeof(T)));
      m_Start += static_cast<utl_FileOffset>(whole) * static_cast<int>(sizeof(T));
      if (SwapBytes() && whole > 0) omi_SwapperGuts::InternalizeArray(values + done, values + done, whole, sizeof(T));
      return done + whole;
    }
    if (!PrepRead(sizeof(T), rest)) break;
    if (SwapBytes()) {
      omi_SwapperGuts::InternalizeArray(values + done, m_Chunk, m_ChunkCount, sizeof(T));
    } else {
      std::memcpy(values + done, m_Chunk, static_cast<std::size_t>(m_ChunkCount) * sizeof(T));
    }
    done += m_ChunkCount;
  }
  return done;
}

template <class T>
void rfm_IOBuffer::WriteTyped(T const* values, int count, char const* failure) {
  CheckArrayArguments(values, count, sizeof(T));
  int done = 0;
  while (done < count) {
    int rest = count - done;
    if (!SwapBytes() && rest * static_cast<int>(sizeof(T)) >= m_Size) {
      // Large arrays in the file's byte order go straight from the caller's
      // memory, after what waits in the buffer.
      if (ReadOnly()) rfm_IssueWritingToReadOnlyException();
      LocalFlush();
      m_Underlying->Seek(m_Start);
      int bytes = rest * static_cast<int>(sizeof(T));
      int written = m_Underlying->Write(reinterpret_cast<char const*>(values + done), bytes);
      RecordRun(m_Start, m_Start + written);
      m_Start += written;
      if (written < bytes) RaiseWriteFailed();
      return;
    }
    if (!PrepWrite(sizeof(T), rest)) Raise(__LINE__, failure);
    if (SwapBytes()) {
      omi_SwapperGuts::ExternalizeArray(m_Chunk, values + done, m_ChunkCount, sizeof(T));
    } else {
      std::memcpy(m_Chunk, values + done, static_cast<std::size_t>(m_ChunkCount) * sizeof(T));
    }
    done += m_ChunkCount;
  }
}

int rfm_IOBuffer::ReadIntArray(int* values, int count) { return ReadTyped(values, count); }
int rfm_IOBuffer::ReadFloatArray(float* values, int count) { return ReadTyped(values, count); }
int rfm_IOBuffer::ReadDoubleArray(double* values, int count) { return ReadTyped(values, count); }

void rfm_IOBuffer::WriteIntArray(int const* values, int count) {
  WriteTyped(values, count, "rfm_IOBuffer::WriteArray(int): Unable to find sufficient space in buffer.");
}

void rfm_IOBuffer::WriteFloatArray(float const* values, int count) {
  WriteTyped(values, count, "rfm_IOBuffer::WriteArray(float): Unable to find sufficient space in buffer.");
}

void rfm_IOBuffer::WriteDoubleArray(double const* values, int count) {
  WriteTyped(values, count, "rfm_IOBuffer::WriteArray(double): Unable to find sufficient space in buffer.");
}

int rfm_IOBuffer::ReadStringArray(cow_String* strings, int count) {
  rfm_StringManager& manager = RequireStringManager();
  int size = manager.ExternalStringSize();
  CheckArrayArguments(strings, count, size);
  int done = 0;
  while (done < count && PrepRead(size, count - done)) {
    manager.Internalize(m_Chunk, strings + done, m_ChunkCount);
    done += m_ChunkCount;
  }
  return done;
}

void rfm_IOBuffer::WriteStringArray(cow_String const* strings, int count) {
  rfm_StringManager& manager = RequireStringManager();
  int size = manager.ExternalStringSize();
  CheckArrayArguments(strings, count, size);
  int done = 0;
  while (done < count) {
    if (!PrepWrite(size, count - done)) {
      Raise(__LINE__, "rfm_IOBuffer::WriteArray(string): Unable to find sufficient space in buffer.");
    }
    manager.Externalize(m_Chunk, strings + done, m_ChunkCount);
    done += m_ChunkCount;
  }
}

void rfm_IOBuffer::Append(rfm_IOBuffer& source) {
  int chunk = std::min(m_Size, source.m_Size);
  while (source.PrepRead(1, chunk)) {
    char const* from = source.m_Chunk;
    int rest = source.m_ChunkCount;
    while (rest > 0) {
      if (!PrepWrite(1, rest)) Raise(__LINE__, "rfm_IOBuffer::Append - Bad transfer length.");
      std::memcpy(m_Chunk, from, static_cast<std::size_t>(m_ChunkCount));
      from += m_ChunkCount;
      rest -= m_ChunkCount;
    }
  }
}
