#include "rfm_SectorRead.h"

#include "rfm_IO.h"
#include "rfm_IntConverter.h"

#include <algorithm>

rfm_SectorRead::rfm_SectorRead(rfm_Sector const& first) : m_Current(first) {
  char length[kLengthSize];
  if (m_Current.Read(length, kLengthSize, 0) == kLengthSize) {
    m_Length = rfm_IntConverter::Internalize(rfm_FileOrder(), length);
  }
}

int rfm_SectorRead::Read(char* buffer, int count) {
  int moved = 0;
  while (moved < count) {
    if (m_Position == m_Current.Size()) {
      m_Current = m_Current.Next();
      m_Position = 0;
    }
    if (m_Current.IsNull()) break;
    int left = count - moved + m_Position;
    m_Current.Prefetch((left + m_Current.Size() - 1) / m_Current.Size());
    int step = std::min(m_Current.Size() - m_Position, count - moved);
    int got = m_Current.Read(buffer + moved, step, m_Position);
    moved += got;
    m_Position += got;
    if (got < step) break;
  }
  return moved;
}
