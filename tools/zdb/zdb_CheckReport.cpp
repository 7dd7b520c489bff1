#include "zdb_CheckReport.h"

#include <cstdio>

void zdb_CheckReport::RepeatedProblem(std::string const& subject, std::string const& line) {
  if (++m_Repeats[subject] <= kLinesPerSubject) m_Lines.push_back(line);
}

void zdb_CheckReport::Close() {
  for (auto const& [subject, count] : m_Repeats) {
    if (count > kLinesPerSubject) {
      m_Lines.push_back(subject + ": " + std::to_string(count - kLinesPerSubject) + " more problems of this kind");
    }
  }
  m_Repeats.clear();
}

std::string zdb_MagicProblem(std::string const& subject, std::int32_t found, std::uint32_t expected) {
  char text[64];
  std::snprintf(text, sizeof text, ": its first word is 0x%08X, not 0x%08X", static_cast<std::uint32_t>(found),
                expected);
  return subject + text;
}
