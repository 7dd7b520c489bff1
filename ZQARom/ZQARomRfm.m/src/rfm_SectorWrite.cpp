#include "rfm_SectorWrite.h"

#include "rfm_IO.h"
#include "rfm_IntConverter.h"

#include <algorithm>

int rfm_SectorWrite::Write(char const* buffer, int count) {
  int moved = 0;
  while (moved < count) {
    if (m_Position == m_Current.Size()) {
      m_Current = m_Current.Extend();
      m_Position = 0;
    }
    int step = std::min(m_Current.Size() - m_Position, count - moved);
    m_Current.Write(buffer + moved, step, m_Position);
    moved += step;
    m_Position += step;
    m_Length += step;
  }
  return count;
}

void rfm_SectorWrite::Commit() {
  char length[rfm_SectorRead::kLengthSize];
  rfm_IntConverter::Externalize(rfm_FileOrder(), length, m_Length);
  m_First.Write(length, rfm_SectorRead::kLengthSize, 0);
}
