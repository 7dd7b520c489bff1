#ifndef rfm_BufferWindow_h
#define rfm_BufferWindow_h

#include <cstring>

// The part of a space buffer that a small transfer needs: the buffer's
// bytes, the direction it serves and how far they are used. A transfer
// that fits is a copy, inline wherever the buffer is used (rfm_BufferedSpace
// keeps its small calls as fast as the library's own); the buffer itself
// does everything else out of line.
//
// Invariants, kept by the buffer, which alone changes the mode and the limit:
// - Reading: bytes [0, m_Limit) are valid and [0, m_Cursor) consumed.
// - Writing: bytes [0, m_Cursor) wait to be written and m_Limit is the size.
// - Idle: m_Cursor and m_Limit are 0.
struct rfm_BufferWindow {
  enum Mode { kIdle = 0, kReading = 1, kWriting = 2 };

  // Whether count bytes at bytes move by a copy in mode.
  bool Fits(Mode mode, void const* bytes, int count) const {
    return m_Mode == mode && bytes != nullptr && count >= 0 && count <= m_Limit - m_Cursor;
  }
  // A transfer that Fits.
  void CopyOut(char* buffer, int count) {
    std::memcpy(buffer, m_Bytes + m_Cursor, static_cast<std::size_t>(count));
    m_Cursor += count;
  }
  void CopyIn(char const* buffer, int count) {
    std::memcpy(m_Bytes + m_Cursor, buffer, static_cast<std::size_t>(count));
    m_Cursor += count;
  }

  char* m_Bytes = nullptr;
  int m_Cursor = 0;
  int m_Limit = 0;
  Mode m_Mode = kIdle;
};

#endif
