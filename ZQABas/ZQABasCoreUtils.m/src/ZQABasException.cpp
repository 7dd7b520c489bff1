#include "ZQABasException.h"

#include <exception>

void ZQABasException::Throw(char const* sourcePath, int line) {
  m_SourcePath = sourcePath ? sourcePath : "";
  m_Line = line;
  Propagate();
  // Every Propagate throws; an override that returned would be a defect.
  std::terminate();
}
