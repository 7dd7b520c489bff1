#include "rom_ClassBag.h"

#include "ZQABasAssert.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_ClassBag";
}

rom_ClassBag::rom_ClassBag(int maxFieldId)
    : m_IndexMapArraySize(maxFieldId + 1 > 0 ? maxFieldId + 1 : 0),
      m_IndexMap(static_cast<std::size_t>(m_IndexMapArraySize), -1) {}

void rom_ClassBag::CheckEntry(int entryIndex) const {
  ZQA_ASSERT(kSourcePath, entryIndex >= 0 && entryIndex < m_IndexMapArraySize);
}

void rom_ClassBag::SetFieldMapEntry(int entryIndex, int column) {
  if (m_IndexMap.empty() || entryIndex < 0) return;
  CheckEntry(entryIndex);
  m_IndexMap[static_cast<std::size_t>(entryIndex)] = column;
}

int rom_ClassBag::MapField(int entryIndex) const {
  if (m_IndexMap.empty() || entryIndex < 0) return -1;
  CheckEntry(entryIndex);
  return m_IndexMap[static_cast<std::size_t>(entryIndex)];
}
